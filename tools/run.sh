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
library="$home/Library"
mkdir -p "$library/Preferences" "$library/Mail/Bundles" "$home/Defaults" "$home/Home"
{ cat /etc/GNUstep/GNUstep.conf 2>/dev/null
  echo "GNUSTEP_USER_DIR_LIBRARY=$library"
  echo "GNUSTEP_USER_DEFAULTS_DIR=$home/Defaults"; } >"$home/GNUstep.conf"
export GNUSTEP_CONFIG_FILE="$home/GNUstep.conf" HOME="$home/Home"
# The system's "Number of Recent Items", which sets how many mailboxes the menus keep.
python3 -c 'import plistlib,sys; plistlib.dump({"RecentDocuments": {"MaxAmount": 10}}, open(sys.argv[1], "wb"))' \
    "$library/Preferences/com.apple.recentitems.plist"
cp -R "$top/samples/store" "$home/store"
cp -R "$build/Lorvane.mailbundle" "$library/Mail/Bundles/"

echo "Mail's store, Library and the plug-in's preferences are in $home"
exec "$build/MailHost" --store "$home/store" -NSMenuInterfaceStyle NSMacintoshInterfaceStyle
