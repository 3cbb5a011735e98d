#!/bin/sh
# Shows the presence of a telephone's lines to other programs: a file for each line, which says
#     free, ringing, busy, do not disturb, or away (not registered, or the telephone cannot be reached).
# With a second telephone, do-not-disturb of the first one's lines is set on the lines of the same names there, too.
#
#     presence-bridge.sh URL TOKEN-FILE FOLDER [URL TOKEN-FILE]
#
# Needs curl alone. Both telephones have an address for HTTP (docs/http.md). A file is replaced as a whole, so a reader
# never sees half of one. A telephone that is not there, or no longer, is asked again every second.
set -eu
url=$1 token=$2 folder=$3 other=${4-} other_token=${5-}
mkdir -p "$folder"

# ask TOKEN-FILE CURL-ARGUMENTS...: the token goes through a pipe, because others can see arguments.
ask() {
    file=$1
    shift
    printf 'header = "Authorization: Bearer %s"\n' "$(cat "$file")" |
        curl --silent --show-error --fail --no-buffer --config - "$@"
}

# A line of text for each line of the telephone: its name, a bar, its presence.
presence() {
    state=$(ask "$token" "$url/state") || return 1
    printf '%s\n' "${state%%\"calls\":*}" | sed 's/{"id":/\n&/g' | sed -n '
        s/^{"id":"\([^"]*\)".*"registration":"\([^"]*\)","state":"\([^"]*\)".*"do_not_disturb":\([a-z]*\).*/\1|\2|\3|\4/
        t found
        d
        :found
        s/|not registered|.*/|away/; t show
        s/|[^|]*|out of service|.*/|away/; t show
        s/|[^|]*|[^|]*|true$/|do not disturb/; t show
        s/|[^|]*|idle|.*/|free/; t show
        s/|[^|]*|ringing|.*/|ringing/; t show
        s/|.*/|busy/
        :show
        p'
}

# mirror LINE PRESENCE: its do-not-disturb at the other telephone. A line that is missing there is left out.
mirror() {
    on=0
    [ "$2" = "do not disturb" ] && on=1
    ask "$other_token" "$other/requests" --data "SetDoNotDisturb Line=$1 doNotDisturbOn=$on" >"$folder/.reply" || true
}

# Writes what has changed.
publish() {
    while IFS='|' read -r line text; do
        was=$(cat "$folder/$line" 2>/dev/null || true)
        [ "$was" = "$text" ] && continue
        printf '%s\n' "$text" >"$folder/.new"
        mv "$folder/.new" "$folder/$line"
        echo "$line: $text"
        [ -z "$other" ] || [ "$text" = away ] || mirror "$line" "$text"
    done
}

everybody_away() {
    for file in "$folder"/*; do
        [ -f "$file" ] && echo "${file##*/}|away"
    done
}

while :; do
    # The stream begins with a message, and sends a comment from time to time: do-not-disturb of a line that is not the
    # primary one has no event.
    ask "$token" "$url/events" | while read -r text; do
        case $text in
        data:* | :*) presence | publish ;;
        esac
    done || true
    everybody_away | publish
    sleep 1
done
