# Sourced by the scripts that start the stand-in Mail for a person: a private home, so
# that your own GNUstep Library is never touched.
#
#   make_private_home FOLDER BUILD   sets up FOLDER/Library (with the plug-in installed
#                                    and "Number of Recent Items" at 10) and FOLDER/store,
#                                    a fresh copy of samples/store, and exports what GNUstep
#                                    needs to use them.
make_private_home() {
    _home=$1
    _library="$_home/Library"
    mkdir -p "$_library/Preferences" "$_library/Mail/Bundles" "$_home/Defaults" "$_home/Home"
    # GNUstep finds the user's Library through its configuration file, not HOME.
    { cat /etc/GNUstep/GNUstep.conf 2>/dev/null
      echo
      echo "GNUSTEP_USER_DIR_LIBRARY=$_library"
      echo "GNUSTEP_USER_DEFAULTS_DIR=$_home/Defaults"; } >"$_home/GNUstep.conf"
    export GNUSTEP_CONFIG_FILE="$_home/GNUstep.conf" HOME="$_home/Home"
    # The system's "Number of Recent Items", which sets how many mailboxes the menus keep.
    python3 -c 'import plistlib,sys; plistlib.dump({"RecentDocuments": {"MaxAmount": 10}}, open(sys.argv[1], "wb"))' \
        "$_library/Preferences/com.apple.recentitems.plist"
    cp -R "$top/samples/store" "$_home/store"
    cp -R "$2/Lorvane.mailbundle" "$_library/Mail/Bundles/"
}
