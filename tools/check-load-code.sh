#!/bin/sh
# Loading the library must run no code of its own: the only start-up entry
# allowed in the shared library is the C runtime's frame_dummy, so its
# .init_array holds at most one pointer and there is no .ctors section.
# Usage: check-load-code.sh LIBRARY
set -eu
lib=$1
sections=$(readelf -S --wide "$lib")
if echo "$sections" | grep -q '\.ctors'; then
    echo "$lib has a .ctors section: something runs at load time"
    exit 1
fi
class=$(readelf -h "$lib" | awk '/Class:/ { print $2 }')
pointer=8
[ "$class" = "ELF32" ] && pointer=4
size=$(echo "$sections" | sed 's/^ *\[ *[0-9]*\]//' | awk '$1 == ".init_array" { print $5 }')
size=$((0x${size:-0}))
if [ "$size" -gt "$pointer" ]; then
    echo "$lib: .init_array holds $((size / pointer)) entries; only frame_dummy is allowed"
    nm -C "$lib" | grep -i -E 'GLOBAL__sub_I|_GLOBAL__I' || true
    exit 1
fi
echo "load-time code: none of the library's own"
