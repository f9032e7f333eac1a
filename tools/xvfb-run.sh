#!/bin/sh
# Runs a command on a private virtual display, or on the current one when asked to.
set -e
if [ -n "$LORVANE_USE_DISPLAY" ] && [ -n "$DISPLAY" ]; then
    exec "$@"
fi
# -noreset: Xvfb otherwise resets when its last client leaves, refusing whoever connects then.
exec xvfb-run -a -s "-screen 0 1280x800x24 -noreset" "$@"
