# A Lorvane.mailbundle in the layout GNUstep loads, built from the plug-in's sources (or the ones
# given after the folder, in that order) and the start-up unit last: the shared object at the
# bundle's root, its Info under Resources/.
function(lorvane_add_bundle target bundle_dir)
    set(sources ${ARGN})
    if(NOT sources)
        set(sources ${LORVANE_SOURCES})
    endif()
    list(APPEND sources ${LORVANE_START_UP_SOURCE})
    list(TRANSFORM sources PREPEND ${CMAKE_SOURCE_DIR}/)
    add_library(${target} MODULE ${sources})
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(${target} PRIVATE ${LORVANE_PLUGIN_LIBRARIES})
    set_target_properties(${target} PROPERTIES
        PREFIX "" SUFFIX ""
        OUTPUT_NAME ${LORVANE_BUNDLE_NAME}
        LIBRARY_OUTPUT_DIRECTORY ${bundle_dir})
    lorvane_objc_target(${target})
    configure_file(${CMAKE_SOURCE_DIR}/Resources/Info-gnustep.plist.in
                   ${bundle_dir}/Resources/Info-gnustep.plist @ONLY)
endfunction()

set(LORVANE_BUNDLE_DIR ${CMAKE_BINARY_DIR}/${LORVANE_BUNDLE_NAME}.mailbundle)
lorvane_add_bundle(Lorvane ${LORVANE_BUNDLE_DIR})

# The same bundle with its sources linked in the reverse order, which the tests load too.
set(LORVANE_REVERSED_BUNDLE_DIR ${CMAKE_BINARY_DIR}/reversed-sources/${LORVANE_BUNDLE_NAME}.mailbundle)
set(_reversed_sources ${LORVANE_SOURCES})
list(REVERSE _reversed_sources)
lorvane_add_bundle(LorvaneReversedSources ${LORVANE_REVERSED_BUNDLE_DIR} ${_reversed_sources})

# The same bundle comparing names as it does where GNUstep has no ICU, and on a Mac: with the
# locale's -localizedCompare:, without collation keys. The menu tests load it too.
set(LORVANE_UNKEYED_BUNDLE_DIR ${CMAKE_BINARY_DIR}/without-collation-keys/${LORVANE_BUNDLE_NAME}.mailbundle)
lorvane_add_bundle(LorvaneWithoutCollationKeys ${LORVANE_UNKEYED_BUNDLE_DIR})
target_compile_definitions(LorvaneWithoutCollationKeys PRIVATE LORVANE_WITHOUT_COLLATION_KEYS=1)

file(GLOB LORVANE_LPROJ_FILES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/Resources/*.lproj/*)
set(_bundle_resource_outputs "")
foreach(res IN LISTS LORVANE_LPROJ_FILES ITEMS ${CMAKE_SOURCE_DIR}/Resources/icon.png)
    file(RELATIVE_PATH rel ${CMAKE_SOURCE_DIR}/Resources ${res})
    foreach(bundle_dir IN ITEMS ${LORVANE_BUNDLE_DIR} ${LORVANE_REVERSED_BUNDLE_DIR} ${LORVANE_UNKEYED_BUNDLE_DIR})
        set(out ${bundle_dir}/Resources/${rel})
        add_custom_command(OUTPUT ${out}
            COMMAND ${CMAKE_COMMAND} -E copy ${res} ${out}
            DEPENDS ${res} VERBATIM)
        list(APPEND _bundle_resource_outputs ${out})
    endforeach()
endforeach()
add_custom_target(LorvaneResources ALL DEPENDS ${_bundle_resource_outputs})
add_dependencies(Lorvane LorvaneResources)
add_dependencies(LorvaneReversedSources LorvaneResources)
add_dependencies(LorvaneWithoutCollationKeys LorvaneResources)

# The macOS bundle's Info.plist, written here as well so that the tests can read what a
# Mac build would ship. Building the bundle refreshes it.
include(${CMAKE_CURRENT_LIST_DIR}/MacInfoPlist.cmake)
lorvane_add_mac_info_plist_target(LorvaneMacInfoPlist ${CMAKE_BINARY_DIR}/mac/Info.plist)
add_dependencies(Lorvane LorvaneMacInfoPlist)
