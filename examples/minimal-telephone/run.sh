#!/bin/sh
# Runs the example, and compares what it prints with what it should. Usage: run.sh PROGRAM LIBRARY
set -eu
found=$(mktemp -d)
trap 'rm -rf "$found"' EXIT

"$1" "$2" >"$found/output" 2>"$found/log" || { cat "$found/log" >&2; exit 1; }
diff -u - "$found/output" <<'EXPECTED'
request: <Method>GetServiceState</Method>
answer:  sfiSuccess,sfiServiceInService
request: <Method>Subscribe</Method>
answer:  sfiSuccess
event:   <Method>RegistrationStateChangeEvent</Method><LineID>4711</LineID><CallID>0</CallID><Registered>1</Registered><RegistrationResult>0</RegistrationResult>
EXPECTED

# Whatever is not there yet says so, once.
sort "$found/log" | uniq -d | grep . >&2 && { echo "the log repeats itself" >&2; exit 1; }
grep -Fxq 'Porting kit: platform/sfi/CSfi.h: CSfi::Start is not there yet: do what must happen last in init' "$found/log"
grep -Fxq 'Porting kit: platform/physical/AuditoryDeviceIfc.h: the context finds no "AuditoryDeviceIfc": the call control is given no sound device' "$found/log"
! grep -Fq 'CSfi::GetServiceState' "$found/log"
