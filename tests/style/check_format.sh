#!/bin/sh
# Checks that every source and header of the project is formatted. Usage: check_format.sh CLANG_FORMAT
set -eu
cd "$(dirname "$0")/../.."
git ls-files -z --cached --others --exclude-standard '*.cpp' '*.h' |
    xargs -0 -n 40 -P "$(nproc)" "$1" --dry-run -Werror
