# Flags and the two kinds of target that every folder is made of.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

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
target_include_directories(tessary_flags INTERFACE ${CMAKE_SOURCE_DIR})
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

# tessary_library(NAME SOURCES file... [LINKS target...])
function(tessary_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  if(arg_SOURCES)
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE tessary_flags)
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${arg_LINKS})
    target_include_directories(${name} INTERFACE ${CMAKE_SOURCE_DIR})
  endif()
endfunction()

# tessary_test(NAME SOURCES file... [LINKS target...]): one GoogleTest program and its entry in ctest
function(tessary_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINKS} GTest::gmock_main tessary_flags)
  add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR})
endfunction()
