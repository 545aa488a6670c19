#!/usr/bin/env bash
# Builds and tests every configuration this machine can build, each in its
# own folder under build/, and prints one line per configuration. Exits
# non-zero when any configuration failed, naming it.
#
#   tools/check.sh            all configurations
#   tools/check.sh NAME...    only those (see CONFIGS below)
#
# Run as root on Debian, it first installs the packages that the chosen
# configurations need and that are missing (see PACKAGES). A configuration
# whose toolchain is still missing fails with a message naming the package.
set -u
cd "$(dirname "$0")/.."
ROOT=$PWD
JOBS=$(nproc 2>/dev/null || echo 2)
LOGDIR=$ROOT/build/logs
mkdir -p "$LOGDIR"
export DEBIAN_FRONTEND=noninteractive

# Configurations in the order they run.
CONFIGS=(native asan m32 win64 win32)

# Debian packages of each configuration. wine32 (i386) is tried by win32
# on its own: it needs a second architecture and may be unavailable.
BASE_PACKAGES="cmake g++ googletest ccache"
declare -A PACKAGES=(
    [native]="$BASE_PACKAGES"
    [asan]="$BASE_PACKAGES"
    [m32]="$BASE_PACKAGES g++-multilib"
    [win64]="$BASE_PACKAGES g++-mingw-w64-x86-64 wine64"
    [win32]="$BASE_PACKAGES g++-mingw-w64-i686"
)

# A test that runs longer than this has hung.
TEST_TIMEOUT=1200

# ---------------------------------------------------------------------------
# Packages
# ---------------------------------------------------------------------------

installed() {
    dpkg -s "$1" 2>/dev/null | grep -q '^Status: install ok installed'
}

apt_updated=0
# apt-get install, after one apt-get update per run (and one more after a
# new architecture). Output goes to build/logs/packages.log.
apt_install() {
    {
        if [ "$apt_updated" -eq 0 ]; then
            apt-get update -q && apt_updated=1
        fi
        apt-get install -y -q --no-install-recommends "$@"
    } >>"$LOGDIR/packages.log" 2>&1
}

# Installs those of the given packages that dpkg doesn't list as installed,
# when the script runs as root on a system with apt-get.
install_missing() {
    command -v dpkg >/dev/null 2>&1 || return 0
    local missing=() package
    for package in "$@"; do
        installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ] || ! command -v apt-get >/dev/null 2>&1; then
        echo "check: missing packages (installed when run as root): ${missing[*]}"
        return 0
    fi
    echo "check: installing ${missing[*]} (log in build/logs/packages.log)"
    apt_install "${missing[@]}" && return 0
    # One unavailable package fails the whole call; the others still come.
    for package in "${missing[@]}"; do
        installed "$package" || apt_install "$package" ||
            echo "check: apt-get could not install $package (see build/logs/packages.log)"
    done
}

# Installs the 32-bit wine loader; says why not when it can't.
WINE32_PACKAGE=wine32:i386
install_wine32() {
    # Elsewhere than on Debian the wine that the toolchain file finds serves.
    command -v dpkg >/dev/null 2>&1 || return 0
    installed "$WINE32_PACKAGE" && return 0
    if ! command -v apt-get >/dev/null 2>&1; then
        echo "the package wine32 is not installed, and there is no apt-get"
        return 1
    fi
    if [ "$(id -u)" -ne 0 ]; then
        echo "the package wine32 is not installed, and installing it needs root"
        return 1
    fi
    local added=0 mark
    if ! dpkg --print-foreign-architectures | grep -qx i386; then
        dpkg --add-architecture i386 >>"$LOGDIR/packages.log" 2>&1 || {
            echo "dpkg --add-architecture i386 failed"
            return 1
        }
        added=1
        apt_updated=0
    fi
    touch "$LOGDIR/packages.log"
    mark=$(wc -l <"$LOGDIR/packages.log")
    if ! apt_install "$WINE32_PACKAGE" || ! installed "$WINE32_PACKAGE"; then
        # The first error apt-get gave says most; the log has the rest.
        echo "apt-get could not install wine32 ($(tail -n +"$((mark + 1))" "$LOGDIR/packages.log" |
            sed -n 's/^E: //p' | head -n 1 | cut -c 1-200); see build/logs/packages.log)"
        # A failed try leaves the package system as it was.
        if [ "$added" -eq 1 ] && ! dpkg -l | grep -q ':i386 '; then
            dpkg --remove-architecture i386 >>"$LOGDIR/packages.log" 2>&1 &&
                apt-get update -q >>"$LOGDIR/packages.log" 2>&1
        fi
        return 1
    fi
}

# ---------------------------------------------------------------------------
# Building and testing
# ---------------------------------------------------------------------------

# Fails unless COMMAND exists, naming the package that brings it.
#   need COMMAND PACKAGE
need() {
    command -v "$1" >/dev/null 2>&1 && return 0
    echo "check: $1 not found: install the Debian package $2"
    return 1
}

# Adds a remark to the configuration's result line.
note() {
    echo "$*"
    echo "$*" >>"$NOTES"
}

#   cmake_build NAME [cmake arguments...]
# With BUILD_TARGET set, only that target is built.
cmake_build() {
    local name=$1
    shift
    local dir=$ROOT/build/$name
    cmake -S "$ROOT" -B "$dir" "$@" &&
        cmake --build "$dir" -j "$JOBS" ${BUILD_TARGET:+--target "$BUILD_TARGET"}
}

#   cmake_test NAME [ctest arguments...]
cmake_test() {
    local name=$1
    shift
    (cd "$ROOT/build/$name" && ctest --output-on-failure --timeout "$TEST_TIMEOUT" "$@")
}

# Builds one CMake configuration and runs its tests.
#   cmake_config NAME [cmake arguments...]
cmake_config() {
    cmake_build "$@" && cmake_test "$1"
}

# The wine that a Windows configuration found (empty if none).
#   found_wine NAME
found_wine() {
    sed -n 's/^RMG_WINE:FILEPATH=//p' "$ROOT/build/$1/CMakeCache.txt" | grep -v NOTFOUND
}

config_native() {
    cmake_config native -DCMAKE_BUILD_TYPE=Release
}

config_asan() {
    local -x UBSAN_OPTIONS=print_stacktrace=1
    cmake_config asan -DCMAKE_BUILD_TYPE=Release -DRMG_SANITIZE=ON -DRMG_BUILD_BENCH=OFF
}

config_m32() {
    local probe=$ROOT/build/m32/probe
    need g++ g++ || return 1
    mkdir -p "$ROOT/build/m32"
    if ! printf '#include <cstdio>\nint main() { std::puts("m32"); }\n' |
            g++ -m32 -x c++ - -o "$probe" || ! "$probe"; then
        echo "check: g++ -m32 cannot build and run a program: install the Debian package g++-multilib"
        return 1
    fi
    cmake_config m32 -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/linux-i686.cmake" \
        -DCMAKE_BUILD_TYPE=Release
}

config_win64() {
    need x86_64-w64-mingw32-g++ g++-mingw-w64-x86-64 || return 1
    cmake_build win64 -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64-x86_64.cmake" \
        -DCMAKE_BUILD_TYPE=Release -URMG_WINE || return 1
    if [ -z "$(found_wine win64)" ]; then
        echo "check: wine64 not found: install the Debian package wine64"
        return 1
    fi
    echo "wine: $(found_wine win64)"
    cmake_test win64
}

config_win32() {
    local why
    need i686-w64-mingw32-g++ g++-mingw-w64-i686 || return 1
    why=$(install_wine32)
    local -a args=(-DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64-i686.cmake"
        -DCMAKE_BUILD_TYPE=Release -URMG_WINE)
    cmake -S "$ROOT" -B "$ROOT/build/win32" "${args[@]}" || return 1
    if [ -z "$why" ] && [ -z "$(found_wine win32)" ]; then
        why="no wine loader for 32-bit programs was found"
    fi
    if [ -n "$why" ]; then
        # The module's export table needs no wine, and nothing but the
        # module: the test programs, which could not run, are not built.
        note "tests under wine skipped: $why"
        BUILD_TARGET=rmg cmake_build win32 "${args[@]}" || return 1
        cmake_test win32 -R '^dll_exports$'
        return
    fi
    cmake_build win32 "${args[@]}" || return 1
    echo "wine: $(found_wine win32)"
    cmake_test win32
}

# ---------------------------------------------------------------------------
# Main
# ---------------------------------------------------------------------------

selected=("$@")
[ ${#selected[@]} -gt 0 ] || selected=("${CONFIGS[@]}")

packages=()
for name in "${selected[@]}"; do
    if ! declare -F "config_$name" >/dev/null; then
        echo "check: unknown configuration '$name' (known: ${CONFIGS[*]})"
        exit 2
    fi
    read -r -a more <<<"${PACKAGES[$name]}"
    packages+=("${more[@]}")
done
install_missing $(printf '%s\n' "${packages[@]}" | sort -u)

passed=0
failed=0
failures=()
for name in "${selected[@]}"; do
    log=$LOGDIR/$name.log
    NOTES=$LOGDIR/$name.notes
    : >"$NOTES"
    start=$(date +%s)
    echo "== $name"
    if "config_$name" >"$log" 2>&1; then
        result="passed ($(($(date +%s) - start)) s"
        passed=$((passed + 1))
    else
        tail -n 60 "$log"
        result="FAILED ($(($(date +%s) - start)) s, full log in build/logs/$name.log"
        failed=$((failed + 1))
        failures+=("$name")
    fi
    while IFS= read -r remark; do result="$result; $remark"; done <"$NOTES"
    rm -f "$NOTES"
    echo "== $name: $result)"
done

echo
if [ "$failed" -gt 0 ]; then
    echo "check: failed configurations: ${failures[*]}"
fi
echo "check: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
