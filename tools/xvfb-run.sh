#!/bin/sh
# Runs a command on a private virtual display, or on the current one when asked to.
set -e
# GNUstep's notification daemon is found through TEMP: a private one per run keeps a daemon
# that another run left stuck on this machine from hanging this run's Mail when it quits.
if [ -z "$TEMP" ]; then
    TEMP=$(mktemp -d "${TMPDIR:-/tmp}/lorvane-run-XXXXXX")
    export TEMP
fi
if [ -n "$LORVANE_USE_DISPLAY" ] && [ -n "$DISPLAY" ]; then
    exec "$@"
fi
# -noreset: Xvfb otherwise resets when its last client leaves, refusing whoever connects then.
exec xvfb-run -a -s "-screen 0 1280x800x24 -noreset" "$@"
