#!/bin/sh
# Checks the dynamic symbol table of the Linux shared library: it must hold
# exactly the functions that the public header declares with RMG_API.
# Usage: check-exports.sh LIBRARY HEADER
set -eu
lib=$1
header=$2
tmp=${TMPDIR:-/tmp}/rmg-exports.$$
trap 'rm -f "$tmp".*' EXIT
nm -D --defined-only "$lib" | awk '$2 != "A" { print $3 }' | sed 's/@.*//' | sort -u >"$tmp.have"
perl -0777 -ne 's{/\*.*?\*/}{}gs; s/^\s*#.*$//mg;
  print "$1\n" while /\bRMG_API\b[^;(]*?\b(\w+)\s*\(/g' "$header" | sort -u >"$tmp.want"
if ! diff -u "$tmp.want" "$tmp.have"; then
  echo "exported symbols differ from the header's declarations (- declared only, + exported only)"
  exit 1
fi
echo "exported symbols: $(wc -l <"$tmp.have") functions, as declared"
