# aidl_ndk_library(<target> SRC_DIR <dir> VERSION <n> [HASH_FILE <file>])
#
# Generates the NDK stubs of every .aidl file under SRC_DIR at build time and builds them into a
# static library, as the device build's aidl_interface does for one frozen version. Without
# HASH_FILE the interfaces have no getInterfaceHash.
function(aidl_ndk_library target)
    cmake_parse_arguments(ARG "" "SRC_DIR;VERSION;HASH_FILE" "" ${ARGN})
    file(GLOB_RECURSE aidl_files CONFIGURE_DEPENDS RELATIVE ${ARG_SRC_DIR} ${ARG_SRC_DIR}/*.aidl)
    list(FILTER aidl_files EXCLUDE REGEX "^aidl_api/")
    set(gen_dir ${CMAKE_CURRENT_BINARY_DIR}/${target}-gen)
    set(sources)
    set(inputs)
    set(hash_args)
    if(ARG_HASH_FILE)
        set(hash_args --hash-file ${ARG_HASH_FILE})
    endif()
    foreach(rel ${aidl_files})
        list(APPEND inputs ${ARG_SRC_DIR}/${rel})
        file(READ ${ARG_SRC_DIR}/${rel} text)
        # Enums become headers only; everything else becomes one source file.
        if(NOT text MATCHES "(^|[ \t\n])enum[ \t\n]")
            string(REGEX REPLACE "\\.aidl$" ".cpp" cpp ${rel})
            list(APPEND sources ${gen_dir}/src/${cpp})
        endif()
    endforeach()
    add_custom_command(
        OUTPUT ${sources}
        COMMAND Python3::Interpreter ${CMAKE_SOURCE_DIR}/tools/aidl_host.py
                --aidl ${AIDL_EXECUTABLE} --src ${ARG_SRC_DIR} --version ${ARG_VERSION}
                ${hash_args} --out ${gen_dir}
        DEPENDS ${inputs} ${ARG_HASH_FILE} ${CMAKE_SOURCE_DIR}/tools/aidl_host.py
        COMMENT "Generating NDK stubs for ${target}"
        VERBATIM)
    add_library(${target} STATIC ${sources})
    target_include_directories(${target} PUBLIC ${gen_dir}/include)
    target_link_libraries(${target} PUBLIC binder_ndk)
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()
