#!/bin/sh
# Checks that check_release.sh notices: the records below are of releases that the present library would break.
# Usage: check_release_test.sh ROOT LIBRARY SURFACE_LIBRARY NM
set -eu
root=${1%/} library=$2 surface=$3 nm=$4
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
record=$copy/tests/abi/release
mkdir -p "$copy/tests/abi"

# expect_refusal PATTERN...: the check fails, and says each PATTERN.
expect_refusal()
{
    if "$root/tests/abi/check_release.sh" "$copy" "$library" "$surface" "$nm" >"$copy/said" 2>&1; then
        echo "nothing was noticed" >&2
        exit 1
    fi
    for pattern; do
        grep -q "$pattern" "$copy/said" || { echo "not noticed: $pattern" >&2; cat "$copy/said" >&2; exit 1; }
    done
}

fresh()
{
    rm -rf "$record"
    cp -r "$root/tests/abi/release" "$record"
}

# An operation had another name, an enumerator another value, a field of a record another place.
fresh
gzip -dc "$root/tests/abi/release/interfaces.abi.gz" |
    sed "/mangled-name='_ZN4CSfi9CallClearE/s/name='CallClear'/name='CallEnd'/
         s/name='sfiCallStateHeld' value='7'/name='sfiCallStateHeld' value='8'/
         /<class-decl name='sfiCallInfo'/,/<\/class-decl>/s/offset-in-bits='64'/offset-in-bits='96'/" |
    gzip -n >"$record/interfaces.abi.gz"
expect_refusal "CSfi::CallEnd" "sfiCallStateHeld' from value '8' to '7'" "callID' offset changed from 96 to 64"

# The release did not need a symbol that is needed now, and exported one that is gone; a change has no reason.
fresh
sed -i '/_ZN4CSfi11GetInstanceEv/d' "$record/required_symbols.txt"
sed -i "s/_ZTV18ParamaterExtractor/_ZTV18ParamaterExtractoR/" "$record/library.abi"
printf '\n[suppress_type]\n  name = nothing\n' >>"$record/suppressions.abignore"
expect_refusal "^CSfi::GetInstance()" "_ZTV18ParamaterExtractoR" "an entry has no reason"
