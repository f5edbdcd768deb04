# SPDX-License-Identifier: MIT
# Flags and the two kinds of target that every folder is made of.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# A compiler cache, where there is one; it knows precompiled headers only when asked to.
find_program(TESSARY_CCACHE ccache)
if(TESSARY_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${TESSARY_CCACHE})
  add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>)
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

if(TESSARY_SANITIZE)
  add_compile_options(-fsanitize=${TESSARY_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TESSARY_SANITIZE})
endif()

if(TESSARY_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Our own code only: third-party sources keep their warnings to themselves.
add_library(tessary_flags INTERFACE)
target_compile_options(tessary_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Woverloaded-virtual -Wcast-qual -Wimplicit-fallthrough
  $<$<NOT:$<PLATFORM_ID:Windows>>:-Wnon-virtual-dtor>)  # COM interfaces have none by design
if(WIN32)
  # Modules stand alone: no compiler runtime beside them.
  target_link_options(tessary_flags INTERFACE -static)
  target_compile_definitions(tessary_flags INTERFACE UNICODE _UNICODE NOMINMAX
                             WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
endif()

# tessary_include_folder(VARIABLE SUBFOLDER...): a folder from which the headers of the current source
# folder and of the subfolders named, and only these, are found under their path from the top: what a
# target does not link it cannot include.
function(tessary_include_folder variable)
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${CMAKE_SOURCE_DIR}
             OUTPUT_VARIABLE folder)
  string(REPLACE / - name ${folder})
  set(prefix ${CMAKE_BINARY_DIR}/include/${name})
  foreach(subfolder IN ITEMS . LISTS ARGN)
    file(MAKE_DIRECTORY ${prefix}/${folder}/${subfolder})
    file(GLOB headers RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS ${subfolder}/*.h)
    foreach(header IN LISTS headers)
      file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${prefix}/${folder}/${header} SYMBOLIC)
    endforeach()
  endforeach()
  set(${variable} ${prefix} PARENT_SCOPE)
endfunction()

# tessary_library(NAME SOURCES file... [LINKS target...] [SUBFOLDERS folder...])
function(tessary_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS;SUBFOLDERS" ${ARGN})
  tessary_include_folder(include ${arg_SUBFOLDERS})
  if(arg_SOURCES)
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE tessary_flags)
    target_include_directories(${name} PUBLIC ${include})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${arg_LINKS})
    target_include_directories(${name} INTERFACE ${include})
  endif()
endfunction()

# tessary_unity(TARGET file...): compiles these sources of the target as one, for a header that they share
# costs more than they do.
function(tessary_unity target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  set_source_files_properties(${ARGN} PROPERTIES UNITY_GROUP heavy)
endfunction()

# tessary_program(NAME SOURCES file... [LINKS target...])
function(tessary_program name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  tessary_include_folder(include)
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINKS} tessary_flags)
  target_include_directories(${name} PRIVATE ${include})
endfunction()

# tessary_module(NAME FILE file SOURCES file... [LINKS target...]): a library that the program loads late,
# beside it as FILE.so and installed with it.
function(tessary_module name)
  cmake_parse_arguments(arg "" "FILE" "SOURCES;LINKS" ${ARGN})
  add_library(${name} MODULE ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINKS} tessary_build_tag tessary_flags)
  set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME ${arg_FILE})
  set_property(GLOBAL APPEND PROPERTY TESSARY_MODULES ${name})
endfunction()

# tessary_test(NAME [OWN_FLAGS] SOURCES file... [LINKS target...]): one GoogleTest program and its entry
# in ctest. Its own code is not optimised, which would take longer than running it ever does.
# OWN_FLAGS: it is compiled with flags that precompiled headers do not fit, from here or from what it
# links.
function(tessary_test name)
  cmake_parse_arguments(arg "OWN_FLAGS" "" "" ${ARGN})
  tessary_program(${name} ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  target_compile_options(${name} PRIVATE -O0)
  if(NOT arg_OWN_FLAGS)
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)  # as the headers are
    target_precompile_headers(${name} REUSE_FROM tessary_test_headers)
  endif()
  add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR})
endfunction()
