# Lorvane.mailbundle for Apple's Mail on macOS, from the same sources as the GNUstep
# bundle, in the layout Mail loads:
#
#   Lorvane.mailbundle/Contents/Info.plist
#   Lorvane.mailbundle/Contents/MacOS/Lorvane
#   Lorvane.mailbundle/Contents/Resources/icon.png
#   Lorvane.mailbundle/Contents/Resources/<language>.lproj/Localizable.strings
#
# `cmake --install` puts it into ~/Library/Mail/Bundles. Gestalt and Mail's own classes
# are found in Mail's process when the bundle loads, so nothing links against them.

include(${CMAKE_CURRENT_LIST_DIR}/MacInfoPlist.cmake)

set(LORVANE_MAIL_BUNDLES_DIR "$ENV{HOME}/Library/Mail/Bundles" CACHE PATH
    "Folder that `cmake --install` copies Lorvane.mailbundle into.")
set(LORVANE_CODESIGN_IDENTITY "-" CACHE STRING
    "Identity `codesign` signs the bundle with after each build (\"-\": ad hoc; empty: do not sign).")

set(LORVANE_MAC_INFO_PLIST ${CMAKE_BINARY_DIR}/mac/Info.plist)
lorvane_write_mac_info_plist(${LORVANE_MAC_INFO_PLIST})

# Resources, each with its place under Contents/.
file(GLOB LORVANE_LPROJ_FILES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/Resources/*.lproj/*)
set(LORVANE_MAC_RESOURCES ${CMAKE_SOURCE_DIR}/Resources/icon.png ${LORVANE_LPROJ_FILES})
foreach(res IN LISTS LORVANE_MAC_RESOURCES)
    file(RELATIVE_PATH rel ${CMAKE_SOURCE_DIR}/Resources ${res})
    get_filename_component(rel_dir ${rel} DIRECTORY)
    if(rel_dir STREQUAL "")
        set(location Resources)
    else()
        set(location Resources/${rel_dir})
    endif()
    set_source_files_properties(${res} PROPERTIES MACOSX_PACKAGE_LOCATION ${location})
endforeach()

add_library(Lorvane MODULE ${LORVANE_SOURCES} ${LORVANE_START_UP_SOURCE} ${LORVANE_MAC_RESOURCES})
target_include_directories(Lorvane PRIVATE ${CMAKE_SOURCE_DIR}/src)
set_target_properties(Lorvane PROPERTIES
    BUNDLE TRUE
    BUNDLE_EXTENSION mailbundle
    OUTPUT_NAME ${LORVANE_BUNDLE_NAME}
    MACOSX_BUNDLE_INFO_PLIST ${LORVANE_MAC_INFO_PLIST}
    XCODE_ATTRIBUTE_CLANG_ENABLE_OBJC_ARC NO)
# Manual retain/release, as on GNUstep.
target_compile_options(Lorvane PRIVATE -fno-objc-arc -Wall -Wextra)
find_package(LibXml2 REQUIRED)
target_link_libraries(Lorvane PRIVATE "-framework Foundation" "-framework AppKit" LibXml2::LibXml2)
target_link_options(Lorvane PRIVATE "LINKER:-undefined,dynamic_lookup")

# From macOS 11 Mail loads only signed plug-ins.
if(NOT LORVANE_CODESIGN_IDENTITY STREQUAL "")
    add_custom_command(TARGET Lorvane POST_BUILD
        COMMAND codesign --force --sign ${LORVANE_CODESIGN_IDENTITY} $<TARGET_BUNDLE_DIR:Lorvane>
        VERBATIM)
endif()

install(TARGETS Lorvane LIBRARY DESTINATION ${LORVANE_MAIL_BUNDLES_DIR})
# Signed again where it lands, since `cmake --install --strip` changes the executable.
if(NOT LORVANE_CODESIGN_IDENTITY STREQUAL "")
    install(CODE "execute_process(COMMAND codesign --force --sign \"${LORVANE_CODESIGN_IDENTITY}\"
        \"\$ENV{DESTDIR}${LORVANE_MAIL_BUNDLES_DIR}/${LORVANE_BUNDLE_NAME}.mailbundle\")")
endif()
