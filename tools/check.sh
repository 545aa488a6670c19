#!/usr/bin/env bash
# Builds and tests every configuration this machine can build, each in its
# own folder under build/, and prints one line per configuration. Exits
# non-zero when any configuration failed, naming it.
#
#   tools/check.sh            all configurations
#   tools/check.sh NAME...    only those (see CONFIGS below)
set -u
cd "$(dirname "$0")/.."
ROOT=$PWD
JOBS=$(nproc 2>/dev/null || echo 2)
LOGDIR=$ROOT/build/logs
mkdir -p "$LOGDIR"

# Configurations in the order they run.
CONFIGS=(native)

# Builds one CMake configuration and runs its tests.
#   cmake_config NAME [cmake arguments...]
cmake_config() {
    local name=$1
    shift
    local dir=$ROOT/build/$name
    cmake -S "$ROOT" -B "$dir" "$@" &&
        cmake --build "$dir" -j "$JOBS" &&
        (cd "$dir" && ctest --output-on-failure)
}

config_native() {
    cmake_config native -DCMAKE_BUILD_TYPE=Release
}

selected=("$@")
[ ${#selected[@]} -gt 0 ] || selected=("${CONFIGS[@]}")

passed=0
failed=0
failures=()
for name in "${selected[@]}"; do
    if ! declare -F "config_$name" >/dev/null; then
        echo "check: unknown configuration '$name' (known: ${CONFIGS[*]})"
        exit 2
    fi
    log=$LOGDIR/$name.log
    start=$(date +%s)
    echo "== $name"
    if "config_$name" >"$log" 2>&1; then
        echo "== $name: passed ($(($(date +%s) - start)) s)"
        passed=$((passed + 1))
    else
        tail -n 60 "$log"
        echo "== $name: FAILED ($(($(date +%s) - start)) s, full log in build/logs/$name.log)"
        failed=$((failed + 1))
        failures+=("$name")
    fi
done

echo
if [ "$failed" -gt 0 ]; then
    echo "check: failed configurations: ${failures[*]}"
fi
echo "check: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
