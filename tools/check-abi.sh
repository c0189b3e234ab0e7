#!/bin/sh
# Checks the ABI of a built ui32.so: it must export exactly srn_get, need
# only libc, and import only libc's memory functions plus the loader glue
# that the C start-up files of every shared object reference.
#   usage: tools/check-abi.sh build/<preset>/ui32.so
set -eu
so="$1"
fail=0

# Undefined symbols that may appear, one reason each.
allowed="
malloc        the fragment store of srn_get
memset        zeroing the fragment store, tile marking, fills
memcpy        row and pattern copies
memmove       overlapping row moves
__cxa_finalize              crtbegin: runs the object's destructors on dlclose (weak)
__gmon_start__              crti: profiling hook, absent unless profiling (weak)
_ITM_registerTMCloneTable   crtbegin: transactional-memory clone table (weak)
_ITM_deregisterTMCloneTable crtbegin: transactional-memory clone table (weak)
"
allowed_names=$(echo "$allowed" | awk 'NF {print $1}')

dynsyms=$(readelf --dyn-syms -W "$so" | awk '$1 ~ /^[0-9]+:$/ && $8 != "" {print $5, $7, $8}')

exported=$(echo "$dynsyms" | awk '$2 != "UND" && ($1 == "GLOBAL" || $1 == "WEAK") {sub(/@.*/, "", $3); print $3}' | sort -u)
if [ "$exported" != "srn_get" ]; then
    echo "FAIL $so: exports [$(echo $exported)], expected [srn_get]"
    fail=1
fi

imported=$(echo "$dynsyms" | awk '$2 == "UND" {sub(/@.*/, "", $3); print $3}' | sort -u)
for sym in $imported; do
    if ! echo "$allowed_names" | grep -qx "$sym"; then
        echo "FAIL $so: imports $sym"
        fail=1
    fi
done

needed=$(readelf -d "$so" | awk '/\(NEEDED\)/ {gsub(/[\[\]]/, "", $5); print $5}')
for lib in $needed; do
    case "$lib" in
        libc.so.6) ;;
        *) echo "FAIL $so: needs $lib"; fail=1 ;;
    esac
done

if readelf -d "$so" | grep -q '(SONAME)'; then
    echo "FAIL $so: has a SONAME"
    fail=1
fi

if [ $fail = 0 ]; then
    echo "ABI ok: $so exports srn_get; imports $(echo $imported); needs $(echo $needed)"
fi
exit $fail
