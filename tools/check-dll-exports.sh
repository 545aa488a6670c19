#!/bin/sh
# Checks the export table of the Windows module tqzk5.dll, as `objdump -p`
# reads it: it must hold exactly the wrmg entries that the public header
# declares, by their plain names (no @N suffix, no underscore), sorted by
# name, each with the ordinal of its place in the module's full table of 22
# entries below, and nothing exported by ordinal alone. The ordinals are
# fixed by that table whatever subset exists, so gaps are expected while
# some entries are still missing; an application that binds by ordinal keeps
# working as entries are added.
# It also checks that the module imports nothing but system DLLs.
# Usage: check-dll-exports.sh DLL HEADER [OBJDUMP]
set -eu
dll=$1
header=$2
objdump=${3:-objdump}
export LC_ALL=C

table='1 wrmgAddS
2 wrmgAllocateImage
3 wrmgAlphaComposite
4 wrmgAlphaCompositeC
5 wrmgAnd
6 wrmgAndS
7 wrmgBlur
8 wrmgColorToGray
9 wrmgConvertFromDIB
10 wrmgConvertToDIB
11 wrmgCopy
12 wrmgCreateImageHeader
13 wrmgCreateROI
14 wrmgDeallocate
15 wrmgDecimate
16 wrmgGetErrStatus
17 wrmgGrayToColor
18 wrmgMirror
19 wrmgSet
20 wrmgSubtractS
21 wrmgTranslateDIB
22 wrmgZoom'

tmp=${TMPDIR:-/tmp}/rmg-dll-exports.$$
trap 'rm -f "$tmp".*' EXIT
status=0

# The entries that the header declares, each with its ordinal, by name.
perl -0777 -ne 's{/\*.*?\*/}{}gs; s/^\s*#.*$//mg;
  print "$1\n" while /\bRMG_API\b[^;(]*?\b(wrmg\w+)\s*\(/g' "$header" | sort -u >"$tmp.declared"
printf '%s\n' "$table" >"$tmp.table"
awk 'NR == FNR { ordinal[$2] = $1; next }
     $1 in ordinal { print ordinal[$1], $1; next }
     { print "unknown", $1 }' "$tmp.table" "$tmp.declared" >"$tmp.want"
if grep '^unknown ' "$tmp.want"; then
    echo "the header declares entries that are not in the table of 22 (listed above)"
    status=1
fi

# The module's name table in its own order, each name with its ordinal.
# Binutils 2.34 and later print the name table's indices without the
# ordinal base (and mark the address table with "+base["); older ones print
# the ordinals themselves.
"$objdump" -p "$dll" >"$tmp.dump"
awk '/^Ordinal Base/ { base = $3 }
     /\+base\[/ { unbiased = 1 }
     /^\[Ordinal\/Name Pointer\] Table/ { names = 1; next }
     names && NF == 0 { names = 0 }
     names { idx = $0; sub(/^[ \t]*\[[ \t]*/, "", idx); sub(/\].*/, "", idx)
             name = $0; sub(/^[^\]]*\][ \t]*/, "", name)
             n++; index_of[n] = idx; name_of[n] = name }
     END { for (i = 1; i <= n; i++) print index_of[i] + (unbiased ? base : 0), name_of[i] }' \
    "$tmp.dump" >"$tmp.have"
awk '/\+base\[/ { s = $0; sub(/.*\+base\[[ \t]*/, "", s); sub(/\].*/, "", s); print s }' \
    "$tmp.dump" | sort -n >"$tmp.addresses"

if ! [ -s "$tmp.have" ]; then
    echo "$dll: no export name table found in the output of $objdump -p"
    exit 1
fi
if grep -E '@|^[0-9]+ _' "$tmp.have"; then
    echo "decorated export names (listed above): the names must be exported plain"
    status=1
fi
if ! diff -u "$tmp.want" "$tmp.have"; then
    echo "the export table differs from the header's entries with their fixed ordinals," \
         "sorted by name (- declared only, + exported only)"
    status=1
fi
awk '{ print $1 }' "$tmp.have" | sort -n >"$tmp.named"
if [ -s "$tmp.addresses" ] && ! diff -u "$tmp.named" "$tmp.addresses" >/dev/null; then
    echo "ordinals exported without a name, or names without an address:"
    diff -u "$tmp.named" "$tmp.addresses" || true
    status=1
fi
# The module must load on a plain system: it may import system DLLs only,
# never a runtime of the compiler's (libstdc++, libgcc, libwinpthread).
awk '/DLL Name:/ { print $3 }' "$tmp.dump" >"$tmp.imports"
if grep -v -i -E '^(kernel32|user32|msvcrt|ucrtbase|api-ms-win-[a-z0-9-]+)\.dll$' "$tmp.imports"; then
    echo "$dll needs the DLLs listed above, which a plain system doesn't have"
    status=1
fi
[ "$status" -eq 0 ] || exit 1
echo "tqzk5.dll exports: $(wc -l <"$tmp.have") of the 22 entries, by plain name and fixed" \
     "ordinal ($(awk '{ printf "%s%s %s", sep, $2, $1; sep = ", " }' "$tmp.have"))"
