#!/bin/sh
# Runs telephone-check, and compares what it says.
# Usage: check_telephone_check.sh TELEPHONE_CHECK LIBRARY VERSION COMPLETE_PROGRAM FORMER_STRINGS_PROGRAM
set -eu
check=$1 library=$2 version=$3 complete=$4 former=$5
found=$(mktemp -d)
trap 'rm -rf "$found"' EXIT
cd "$found"
ln -s "$library" service.so
ln -s "$complete" complete
ln -s "$former" former
ln -s "$check" hidden  # exports nothing
echo "no program" >text
head -c 3000 "$library" >damaged

# expect STATUS ARGUMENTS...: compares standard output and standard error with standard input.
expect()
{
    status=$1
    shift
    "$check" "$@" >found 2>&1 && got=0 || got=$?
    [ "$got" -eq "$status" ] || { echo "telephone-check $*: exit status $got, expected $status" >&2; exit 1; }
    diff -u --label "expected of telephone-check $*" --label found - found
}

expect 0 service.so complete <<EXPECTED
service.so: version $version
complete: exports all 48 functions that it needs
EXPECTED

# Notes are kept when the file is stripped.
strip -o stripped.so service.so
expect 0 stripped.so complete <<EXPECTED
stripped.so: version $version
complete: exports all 48 functions that it needs
EXPECTED

expect 2 service.so <<'EXPECTED'
Usage: telephone-check LIBRARY PROGRAM [SHARED_LIBRARY_OF_THE_PROGRAM...]
EXPECTED
expect 2 service.so nowhere <<'EXPECTED'
telephone-check: nowhere cannot be read
EXPECTED
expect 2 text complete <<'EXPECTED'
telephone-check: text is not an ELF file
EXPECTED
expect 2 damaged complete <<'EXPECTED'
telephone-check: damaged is damaged: it ends in the middle of a table
EXPECTED

# What is missing, in the middle of a long list.
section()
{
    "$check" "$@" >whole || :
    sed -n '1,/^$/p' whole
    awk -v RS= '/^(CSfi::GetInstance|sfiGetCPUAddr|Semaphore::Semaphore|Serializer::serialize\(std::vector<std)/' whole | sort
}
section service.so hidden >found
diff -u - found <<EXPECTED
service.so: version $version
hidden: 48 of the 48 functions that it needs are missing
The program exports no function at all. Link it with -rdynamic (CMake: ENABLE_EXPORTS ON).

    platform/framework/Semaphore.h: Creates a semaphore with \`initial\` free units.
    platform/framework/Serializer.h: Writes numbers. Writes texts, so that the receiver can tell them apart.
    platform/sfi/CSfi.h: The call control of this telephone.
    platform/sfi/SfiConfiguration.h: Reads the number of group pickup at the call server.
CSfi::GetInstance()
Semaphore::Semaphore(int, int, bool)
Serializer::serialize(std::vector<std::string> const&)
sfiGetCPUAddr(std::string&)
EXPECTED
section service.so former >found
grep -q '^former: 48 of the 48' found
grep -Fxq '    exported is _Z13sfiGetCPUAddrRSs instead of _Z13sfiGetCPUAddrRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE: compile the program with libstdc++ and _GLIBCXX_USE_CXX11_ABI=1' whole

# Parts of the platform may be in shared libraries of the program.
expect 0 service.so former complete <<EXPECTED
service.so: version $version
former: exports all 48 functions that it needs
EXPECTED

# Every function that the library needs is one of platform/.
"$check" service.so hidden | grep -c '^    platform/' | grep -qx 48
