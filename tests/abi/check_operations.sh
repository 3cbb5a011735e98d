#!/bin/sh
# Compares the virtual operations of the shared classes, with their slots and full signatures, with the record.
# Usage: check_operations.sh ABIDW SURFACE_LIBRARY RECORD [write]
set -eu
abidw=$1 surface=$2 record=$3
found=$(mktemp)
trap 'rm -f "$found"' EXIT

# A virtual operation is a member function with a slot; its mangled name contains its parameters.
"$abidw" "$surface" |
    sed -n "s/.*<member-function.* vtable-offset='\([0-9]*\)'.*/slot \1/p
            s/.*<member-function.*/none/p
            s/.*<function-decl .*mangled-name='\([^']*\)'.*/name \1/p" |
    awk '$1 == "slot" { slot = $2 } $1 == "none" { slot = "" } $1 == "name" && slot != "" { print $2, slot; slot = "" }' |
    c++filt | sed 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' |
    awk '{ slot = $NF; $NF = ""; class = $0; sub(/::.*/, "", class); printf "%s %03d %s\n", class, slot, $0 }' |
    sed 's/ *$//' | LC_ALL=C sort -u >"$found"

if [ "${4:-}" = write ]; then
    { echo "# Class, slot and signature of every virtual operation that crosses the edge. A line changes only when the"
      echo "# binary interface does; write it anew with check_operations.sh ... write."
      cat "$found"; } >"$record"
    exit
fi
[ -s "$found" ] || { echo "no operations found in $surface" >&2; exit 1; }
grep -v '^#' "$record" | diff -u --label "recorded: $record" --label "$surface" - "$found"
