# Writes the macOS Info.plist of Lorvane.mailbundle from Resources/Info.plist.in.
#
#   cmake -DTEMPLATE=Resources/Info.plist.in -DOUTPUT=<file>
#         -DLORVANE_BUNDLE_NAME=Lorvane -DLORVANE_BUNDLE_IDENTIFIER=org.lorvane.mailbundle
#         -DLORVANE_VERSION=1.0
#         -DLORVANE_MAIL_COMPATIBILITY_UUIDS=<uuid>,<uuid>,...
#         -DLORVANE_MAIL_SYSTEM_VERSIONS=10.12,10.13,...
#         -P cmake/GenerateMacInfoPlist.cmake
#
# Mail loads a bundle only if its Info.plist lists the compatibility UUID of that Mail
# build: up to 10.11 in SupportedPluginCompatibilityUUIDs, from 10.12 on in a key named
# after the system version, Supported<major>.<minor>PluginCompatibilityUUIDs. Every UUID
# given goes under the plain key and under one key per system version, so one bundle
# serves every Mail whose UUID the user collected. The two lists may be separated by
# semicolons, commas or white space. Nothing is written when an argument is malformed.

function(fail message)
    message(FATAL_ERROR "GenerateMacInfoPlist: ${message}")
endfunction()

function(split_list out text)
    string(REGEX REPLACE "[,; \t\r\n]+" ";" items "${text}")
    list(FILTER items EXCLUDE REGEX "^$")
    list(REMOVE_DUPLICATES items)
    set(${out} "${items}" PARENT_SCOPE)
endfunction()

function(xml_escape out text)
    string(REPLACE "&" "&amp;" text "${text}")
    string(REPLACE "<" "&lt;" text "${text}")
    string(REPLACE ">" "&gt;" text "${text}")
    set(${out} "${text}" PARENT_SCOPE)
endfunction()

foreach(required IN ITEMS TEMPLATE OUTPUT LORVANE_BUNDLE_NAME LORVANE_BUNDLE_IDENTIFIER LORVANE_VERSION)
    if("${${required}}" STREQUAL "")
        fail("${required} is not set.")
    endif()
endforeach()
if(NOT EXISTS "${TEMPLATE}")
    fail("no template at ${TEMPLATE}.")
endif()

# Mail prints its UUID in capitals; a lower-case copy of it would not match.
set(hex "[0-9A-Fa-f]")
set(uuid_pattern "^${hex}${hex}${hex}${hex}${hex}${hex}${hex}${hex}-${hex}${hex}${hex}${hex}-${hex}${hex}${hex}${hex}-${hex}${hex}${hex}${hex}-${hex}${hex}${hex}${hex}${hex}${hex}${hex}${hex}${hex}${hex}${hex}${hex}$")
split_list(given_uuids "${LORVANE_MAIL_COMPATIBILITY_UUIDS}")
set(uuids "")
foreach(uuid IN LISTS given_uuids)
    if(NOT uuid MATCHES "${uuid_pattern}")
        fail("\"${uuid}\" is not a UUID (want XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX, as Mail prints it).")
    endif()
    string(TOUPPER "${uuid}" uuid)
    list(APPEND uuids "${uuid}")
endforeach()
list(REMOVE_DUPLICATES uuids)

split_list(versions "${LORVANE_MAIL_SYSTEM_VERSIONS}")
foreach(version IN LISTS versions)
    if(NOT version MATCHES "^[0-9]+\\.[0-9]+$")
        fail("\"${version}\" is not a system version of the form <major>.<minor>.")
    endif()
endforeach()

set(uuid_array "\t<array>\n")
foreach(uuid IN LISTS uuids)
    string(APPEND uuid_array "\t\t<string>${uuid}</string>\n")
endforeach()
string(APPEND uuid_array "\t</array>\n")

set(keys "\t<key>SupportedPluginCompatibilityUUIDs</key>\n${uuid_array}")
foreach(version IN LISTS versions)
    string(APPEND keys "\t<key>Supported${version}PluginCompatibilityUUIDs</key>\n${uuid_array}")
endforeach()

xml_escape(LORVANE_BUNDLE_NAME "${LORVANE_BUNDLE_NAME}")
xml_escape(LORVANE_BUNDLE_IDENTIFIER "${LORVANE_BUNDLE_IDENTIFIER}")
xml_escape(LORVANE_VERSION "${LORVANE_VERSION}")
set(LORVANE_COMPATIBILITY_KEYS "${keys}")

# Write beside the output and rename, so a reader never sees half a file.
configure_file("${TEMPLATE}" "${OUTPUT}.tmp" @ONLY)
file(RENAME "${OUTPUT}.tmp" "${OUTPUT}")
