#!/bin/sh
# Checks the direction of includes: platform/ includes itself, include/ also platform/, src/ also include/, and all
# three the standard library. platform/kit/check is a program of its own. Usage: check_includes.sh ROOT
set -eu
root=$1
cd "$root"
result=0

complain()
{
    echo "$1: $2 may not be included in this folder" >&2
    result=1
}

# check FOLDER ALLOWED...: every header that a file of FOLDER includes in quotes is in one of the allowed folders;
# headers of platform/ are included by their path.
check()
{
    folder=$1
    shift
    for file in $(find "$folder" -path platform/kit/check -prune -o -name '*.h' -print -o -name '*.cpp' -print); do
        for name in $(sed -n 's/^ *# *include *"\([^"]*\)".*/\1/p' "$file"); do
            known=
            for allowed; do
                case $name in
                */*) [ "${name%%/*}" = "$allowed" ] && [ -f "$name" ] && known=yes ;;
                *) [ "$allowed" != platform ] && { [ -f "$allowed/$name" ] || [ -f "$allowed/$name.in" ]; } && known=yes ;;
                esac
            done
            [ -n "$known" ] || complain "$file" "\"$name\""
        done
        for name in $(sed -n 's/^ *# *include *<\([^>]*\)>.*/\1/p' "$file"); do
            case $name in
            dlfcn.h) [ "$file" = platform/kit/Library.cpp ] || complain "$file" "<$name>" ;;
            *[!a-z_]*) complain "$file" "<$name>" ;;
            esac
        done
    done
}

check platform platform
check include include platform
check src src include platform

exit $result
