#!/bin/sh
# Plays a day in the stand-in Mail with the plug-in installed, on a virtual display, and
# checks what each part of it did to the mailboxes on disk and to the preferences file.
#
#   tools/demo.sh [BUILD [FOLDER]]
#
# Everything goes into FOLDER (a new temporary folder by default): a private home with its
# own GNUstep Library, a copy of samples/store, and the screenshots, named on the last line.
# Exits 0 only when every step did what it should.
set -u
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-build}" 2>/dev/null && pwd) || { echo "demo: no build folder ${1:-build}; run make first" >&2; exit 2; }

# The whole day runs on one display: start it once, then carry on inside it.
if [ -z "${LORVANE_DEMO_ON_DISPLAY:-}" ]; then
    LORVANE_DEMO_ON_DISPLAY=1 exec "$top/tools/xvfb-run.sh" "$0" "$@"
fi

out=${2:-$(mktemp -d /tmp/lorvane-demo-XXXXXX)}
mkdir -p "$out" && out=$(cd "$out" && pwd)
(cd "$out" && rm -rf Library Defaults Home store screenshots GNUstep.conf mail.log files-before files-after \
    demo.scenario.out demo-relaunch.scenario.out preferences-after-first-launch.plist)
library="$out/Library"
store="$out/store"
shots="$out/screenshots"
prefs="$library/Preferences/org.lorvane.mailbundle.plist"
failures=0

fail() {
    echo "  FAILED: $*"
    failures=$((failures + 1))
}

. "$top/tools/private-home.sh"
make_private_home "$out" "$build"
mkdir -p "$shots"

# "Home/Travel/2026" lives in store/Home/Travel.mbox/2026.mbox.
folder_of() {
    echo "$store/${1%%/*}/$(printf '%s' "${1#*/}" | sed 's#/#.mbox/#g').mbox"
}

messages_in() {
    find "$(folder_of "$1")/Messages" -name '*.eml' 2>/dev/null | grep -c .
}

expect_messages() {
    found=$(messages_in "$1")
    if [ "$found" -eq "$2" ]; then
        echo "  $1 holds $2 messages, as it should"
    else
        fail "expected $1 to hold $2 messages; it holds $found"
    fi
}

expect_no_mailbox() {
    if [ -e "$(folder_of "$1")" ]; then fail "expected $1 to be gone; it is still on disk"
    else echo "  $1 is no longer on disk, as it should"; fi
}

message_files() {
    (cd "$store" && find . -name '*.eml' | sed 's#^\./##' | sort)
}

# The message files a session added and took away.
say_moved_files() {
    message_files >"$out/files-after"
    comm -23 "$out/files-before" "$out/files-after" | sed 's/^/  gone: /'
    comm -13 "$out/files-before" "$out/files-after" | sed 's/^/  new:  /'
}

# The items of the first or last menu-bar listing of a submenu in what Mail printed.
menu_items() {
    awk -v header="  \"$2\" (menu bar)," -v which="$3" '
        index($0, header) == 1 { n++; block = ""; inside = 1; next }
        inside && /^    / { block = block $0 "\n"; next }
        inside { inside = 0; if (n == 1) first = block }
        END { if (inside && n == 1) first = block; printf "%s", (which == "first" ? first : block) }' "$1"
}

# The records of the preferences file must name exactly these mailboxes, in these fields.
expect_records() {
    python3 - "$prefs" "$store" "$@" <<'EOF' || failures=$((failures + 1))
import plistlib, sys
path, store, wanted = sys.argv[1], sys.argv[2], sys.argv[3:]
def folder(name):
    account, _, rest = name.partition("/")
    return "/".join([store, account] + [part + ".mbox" for part in rest.split("/")])
records = plistlib.load(open(path, "rb")).get("RecentMailboxes", [])
found = sorted(r.get("FullPath", "") for r in records)
expected = sorted(folder(name) for name in wanted)
bad_keys = [sorted(r) for r in records if sorted(r) != ["Accesses", "Date", "FullPath"]]
if found == expected and not bad_keys:
    print("  the preferences file records %d mailboxes: %s" % (len(wanted), ", ".join(wanted) or "none"))
    sys.exit(0)
print("  FAILED: expected the preferences file to record %s" % (expected or "no mailboxes"))
print("          it records %s" % (found or "no mailboxes"))
if bad_keys:
    print("          records with other keys than Accesses, Date, FullPath: %s" % bad_keys)
sys.exit(1)
EOF
}

# One launch of Mail playing a scenario; its own checks stop it at the first failing step.
run_mail() {
    echo
    echo "== $1"
    message_files >"$out/files-before"
    "$build/MailHost" --store "$store" --scenario "$top/samples/$2" --screenshots "$shots" \
        -NSMenuInterfaceStyle NSMacintoshInterfaceStyle -GSX11HandlesWindowDecorations NO \
        >"$out/$2.out" 2>>"$out/mail.log"
    status=$?
    cat "$out/$2.out"
    if [ $status -ne 0 ]; then
        fail "Mail stopped at the step above (exit status $status); its log is $out/mail.log"
        tail -n 5 "$out/mail.log" | sed 's/^/          /'
    fi
    echo "-- message files that changed on disk (renamed and deleted mailboxes included):"
    say_moved_files
    return $status
}

echo "Lorvane demo in $out"
if run_mail "Mail starts with Lorvane; a morning of filing" demo.scenario; then
    echo "-- checks:"
    expect_messages Home/Inbox 1
    expect_messages Home/Archive 4
    expect_messages Home/Bills 4
    expect_no_mailbox Home/Receipts
    expect_messages Home/Family 4
    expect_messages Work/Inbox 1
    expect_messages Work/Archive 2
    expect_no_mailbox Work/Projects/Apollo
    expect_records Home/Archive Home/Bills Home/Family Work/Archive
    cp "$prefs" "$out/preferences-after-first-launch.plist"
fi
if [ $failures -eq 0 ] && run_mail "Mail starts again, later" demo-relaunch.scenario; then
    echo "-- checks:"
    for title in "Move to Recent" "Copy to Recent" "Go to Recent"; do
        before=$(menu_items "$out/demo.scenario.out" "$title" last)
        after=$(menu_items "$out/demo-relaunch.scenario.out" "$title" first)
        if [ -n "$before" ] && [ "$before" = "$after" ]; then
            echo "  \"$title\" lists the same mailboxes as before Mail quit"
        else
            fail "expected \"$title\" to list, as before Mail quit:"
            echo "$before"
            echo "          it lists:"
            echo "${after:-          (no listing)}"
        fi
    done
    expect_records
fi

show_preferences() {
    echo
    echo "== $1"
    [ -f "$2" ] || { fail "there is no preferences file: Mail stopped before it quit"; return; }
    python3 -c 'import json,plistlib,sys; print(json.dumps(plistlib.load(open(sys.argv[1], "rb")), indent=2, default=str))' "$2" \
        || fail "the preferences file cannot be read"
}

if [ -f "$out/preferences-after-first-launch.plist" ]; then
    show_preferences "The preferences file when Mail first quit:" "$out/preferences-after-first-launch.plist"
fi
show_preferences "The preferences file at the end, $prefs:" "$prefs"
echo
if [ $failures -eq 0 ]; then echo "Every step did what it should."
else echo "$failures problem(s); see FAILED above."; fi
echo "Screenshots: $shots"
[ $failures -eq 0 ]
