# Settings of the macOS Info.plist, shared by the Mac bundle (MacBundle.cmake) and by the
# Linux build, which writes the same file to mac/Info.plist so that it can be checked here.
# GenerateMacInfoPlist.cmake does the writing in both cases.

set(LORVANE_MAIL_COMPATIBILITY_UUIDS "" CACHE STRING
    "Mail's plug-in compatibility UUIDs the bundle declares (a ;-list). On each Mac, \
`defaults read /Applications/Mail.app/Contents/Info PluginCompatibilityUUID` prints that Mail's one.")
set(LORVANE_MAIL_SYSTEM_VERSIONS
    "10.12;10.13;10.14;10.15;\
11.0;11.1;11.2;11.3;11.4;11.5;11.6;11.7;\
12.0;12.1;12.2;12.3;12.4;12.5;12.6;12.7;\
13.0;13.1;13.2;13.3;13.4;13.5;13.6;13.7"
    CACHE STRING
    "System versions (<major>.<minor>) that get a Supported<version>PluginCompatibilityUUIDs key.")

set(LORVANE_MAC_INFO_PLIST_TEMPLATE ${CMAKE_SOURCE_DIR}/Resources/Info.plist.in)
set(LORVANE_MAC_INFO_PLIST_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/GenerateMacInfoPlist.cmake)

# The command line that writes the Info.plist to <output>. The lists travel comma-separated
# so that no build tool splits them into separate arguments.
function(lorvane_mac_info_plist_command output out_var)
    string(REPLACE ";" "," uuids "${LORVANE_MAIL_COMPATIBILITY_UUIDS}")
    string(REPLACE ";" "," versions "${LORVANE_MAIL_SYSTEM_VERSIONS}")
    set(${out_var}
        ${CMAKE_COMMAND}
        -DTEMPLATE=${LORVANE_MAC_INFO_PLIST_TEMPLATE}
        -DOUTPUT=${output}
        -DLORVANE_BUNDLE_NAME=${LORVANE_BUNDLE_NAME}
        -DLORVANE_BUNDLE_IDENTIFIER=${LORVANE_BUNDLE_IDENTIFIER}
        -DLORVANE_VERSION=${PROJECT_VERSION}
        -DLORVANE_MAIL_COMPATIBILITY_UUIDS=${uuids}
        -DLORVANE_MAIL_SYSTEM_VERSIONS=${versions}
        -P ${LORVANE_MAC_INFO_PLIST_SCRIPT}
        PARENT_SCOPE)
endfunction()

# Writes the Info.plist now, while configuring; a change to the template or the script
# configures again.
function(lorvane_write_mac_info_plist output)
    lorvane_mac_info_plist_command(${output} command)
    execute_process(COMMAND ${command} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Could not write ${output}; see the message above.")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
                 ${LORVANE_MAC_INFO_PLIST_TEMPLATE} ${LORVANE_MAC_INFO_PLIST_SCRIPT})
    if("${LORVANE_MAIL_COMPATIBILITY_UUIDS}" STREQUAL "")
        message(WARNING "LORVANE_MAIL_COMPATIBILITY_UUIDS is empty: Mail will refuse the bundle "
                        "until it lists the UUID that "
                        "`defaults read /Applications/Mail.app/Contents/Info PluginCompatibilityUUID` prints.")
    endif()
endfunction()

# A target that writes the Info.plist while building, again whenever the template, the
# script or one of the settings above changes.
function(lorvane_add_mac_info_plist_target target output)
    lorvane_mac_info_plist_command(${output} command)
    get_filename_component(dir ${output} DIRECTORY)
    set(settings ${dir}/InfoPlistSettings.txt)
    string(REPLACE ";" "\n" settings_text "${command}")
    file(CONFIGURE OUTPUT ${settings} CONTENT "${settings_text}\n" @ONLY)
    add_custom_command(OUTPUT ${output}
        COMMAND ${command}
        DEPENDS ${LORVANE_MAC_INFO_PLIST_TEMPLATE} ${LORVANE_MAC_INFO_PLIST_SCRIPT} ${settings}
        COMMENT "Writing the macOS Info.plist to ${output}"
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS ${output})
endfunction()
