#!/bin/sh
# Opens the stand-in Mail with the plug-in on your display, to try it by hand, on a fresh
# copy of samples/store in a private home (your own GNUstep Library is never touched).
#
#   tools/run.sh [BUILD]
set -u
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-build}" 2>/dev/null && pwd) || { echo "run: no build folder ${1:-build}; run make first" >&2; exit 2; }
if [ -z "${DISPLAY:-}" ]; then
    echo "run: no DISPLAY to open Mail on; try make demo, which brings its own virtual display" >&2
    exit 1
fi

home=$(mktemp -d /tmp/lorvane-run-XXXXXX)
. "$top/tools/private-home.sh"
make_private_home "$home" "$build"

echo "Mail's store, Library and the plug-in's preferences are in $home"
exec "$build/MailHost" --store "$home/store" -NSMenuInterfaceStyle NSMacintoshInterfaceStyle
