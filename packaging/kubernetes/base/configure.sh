#!/bin/sh
# Writes the configuration of a telephone: configure.sh FOLDER FILE. FOLDER has NAME.toml for a telephone with a
# configuration of its own, and telephone.toml for all others. NAME ends with the number of the telephone ("telephone-7").
#
# NAME, PASSWORD, ADDRESS, REGISTRAR: what is filled in. NUMBER: of the line, if it is not 1000 plus that of the telephone.
set -eu
folder=$1
number=${NUMBER:-$((1000 + ${NAME##*-}))}
configuration=$folder/$NAME.toml
[ -f "$configuration" ] || configuration=$folder/telephone.toml
# In the replacement of sed, these three are not plain characters; in a string of TOML, two are not.
plain() { printf '%s' "$1" | sed -e 's/[\\"]/\\&/g' -e 's/[\\&|]/\\&/g'; }
umask 077
sed -e "s|@NUMBER@|$(plain "$number")|g" -e "s|@PASSWORD@|$(plain "$PASSWORD")|g" \
    -e "s|@ADDRESS@|$(plain "$ADDRESS")|g" -e "s|@REGISTRAR@|$(plain "$REGISTRAR")|g" "$configuration" >"$2"
