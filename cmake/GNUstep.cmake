# Compiler and linker flags for Objective-C++ on GNUstep with the GCC run-time.
find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags OUTPUT_VARIABLE _gs_objc_flags OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND ${GNUSTEP_CONFIG} --gui-libs OUTPUT_VARIABLE _gs_gui_libs OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND gcc -print-file-name=include OUTPUT_VARIABLE _gcc_include OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND gcc -print-libgcc-file-name OUTPUT_VARIABLE _libgcc OUTPUT_STRIP_TRAILING_WHITESPACE)
get_filename_component(_libgcc_dir ${_libgcc} DIRECTORY)

separate_arguments(_gs_objc_flags UNIX_COMMAND "${_gs_objc_flags}")
separate_arguments(_gs_gui_libs UNIX_COMMAND "${_gs_gui_libs}")

# CMake tracks dependencies and the build type sets optimisation: drop GNUstep's own.
# GNUstep's headers are system headers, so -Wextra speaks only of ours.
set(GNUSTEP_COMPILE_FLAGS "")
foreach(flag IN LISTS _gs_objc_flags)
    if(flag MATCHES "^-(MMD|MP|g|O[0-9s]?|Wall|Wno-import|I\\.)$")
        continue()
    elseif(flag MATCHES "^-I(.+)$")
        if(EXISTS "${CMAKE_MATCH_1}")
            list(APPEND GNUSTEP_COMPILE_FLAGS "-isystem${CMAKE_MATCH_1}")
        endif()
    else()
        list(APPEND GNUSTEP_COMPILE_FLAGS "${flag}")
    endif()
endforeach()
list(APPEND GNUSTEP_COMPILE_FLAGS -fobjc-runtime=gcc "-idirafter${_gcc_include}")
set(GNUSTEP_LINK_FLAGS -L${_libgcc_dir} ${_gs_gui_libs})

# GNUstep collates names with ICU; the plug-in makes its collation keys with the same library.
find_package(ICU REQUIRED COMPONENTS i18n uc)
# XML property lists are read with libxml2, which GNUstep itself depends on.
find_package(LibXml2 REQUIRED)
set(LORVANE_PLUGIN_LIBRARIES ICU::i18n ICU::uc LibXml2::LibXml2)

set(LORVANE_WARNINGS -Wall -Wextra)
set(LORVANE_SANITIZER_FLAGS "")
if(LORVANE_SANITIZE)
    # No recovery: a finding stops the process, so it fails the test that caused it.
    set(LORVANE_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
endif()

function(lorvane_objc_target target)
    get_target_property(_sources ${target} SOURCES)
    foreach(src IN LISTS _sources)
        if(src MATCHES "\\.mm$")
            set_source_files_properties(${src} TARGET_DIRECTORY ${target} PROPERTIES LANGUAGE OBJCXX)
        endif()
    endforeach()
    target_compile_options(${target} PRIVATE ${GNUSTEP_COMPILE_FLAGS} ${LORVANE_WARNINGS} ${LORVANE_SANITIZER_FLAGS})
    target_link_options(${target} PRIVATE ${LORVANE_SANITIZER_FLAGS})
    target_link_libraries(${target} PRIVATE ${GNUSTEP_LINK_FLAGS})
endfunction()

# CMake has no Linux settings for Objective-C++ linking: without C++'s, shared libraries
# get no SONAME and programs no RPATH, so MailHost would not find libMailStandIn.so.
foreach(_flag SHARED_LIBRARY_SONAME_@_FLAG SHARED_LIBRARY_RUNTIME_@_FLAG SHARED_LIBRARY_RUNTIME_@_FLAG_SEP
              EXECUTABLE_RUNTIME_@_FLAG EXECUTABLE_RUNTIME_@_FLAG_SEP
              SHARED_LIBRARY_RPATH_LINK_@_FLAG EXECUTABLE_RPATH_LINK_@_FLAG)
    string(REPLACE "@" "CXX" _cxx_name "${_flag}")
    string(REPLACE "@" "OBJCXX" _objcxx_name "${_flag}")
    if(NOT DEFINED CMAKE_${_objcxx_name} OR "${CMAKE_${_objcxx_name}}" STREQUAL "")
        set(CMAKE_${_objcxx_name} "${CMAKE_${_cxx_name}}")
    endif()
endforeach()
