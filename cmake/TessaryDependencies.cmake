# SPDX-License-Identifier: MIT
# What comes from Debian's packages; scripts/setup.sh installs them.

if(TESSARY_TESTS)
  # From source, so that every preset tests with the flags it builds with.
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  target_compile_options(gtest PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)  # a false alarm of GCC 12
  if(NOT TARGET GTest::gmock_main)
    add_library(GTest::gmock_main ALIAS gmock_main)
  endif()

  # What every test includes, compiled once.
  file(WRITE ${CMAKE_BINARY_DIR}/test_headers.cpp "")
  add_library(tessary_test_headers OBJECT ${CMAKE_BINARY_DIR}/test_headers.cpp)
  target_link_libraries(tessary_test_headers PRIVATE GTest::gmock_main tessary_flags)
  target_compile_options(tessary_test_headers PRIVATE -O0)
  set_target_properties(tessary_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  target_precompile_headers(tessary_test_headers PRIVATE
    <gmock/gmock.h> <gtest/gtest.h> <algorithm> <memory> <string> <vector>)
endif()

# tessary_headers(NAME PATH...): a header-only library of /usr/include, by itself: the cross build
# must never see the rest of that folder.
function(tessary_headers name)
  set(prefix ${CMAKE_BINARY_DIR}/headers/${name})
  foreach(path IN LISTS ARGN)
    if(NOT EXISTS /usr/include/${path})
      message(FATAL_ERROR "/usr/include/${path} is missing: run scripts/setup.sh")
    endif()
    cmake_path(GET path PARENT_PATH folder)
    file(COPY /usr/include/${path} DESTINATION ${prefix}/${folder})
  endforeach()
  add_library(${name} INTERFACE)
  target_include_directories(${name} SYSTEM INTERFACE ${prefix})
endfunction()

tessary_headers(tessary_cli11 CLI)
tessary_headers(tessary_json nlohmann)
tessary_headers(tessary_bitstream bitstream)
tessary_headers(tessary_spdlog spdlog fmt)
target_compile_definitions(tessary_spdlog INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)

# TinyXML prints the TTML documents. Windows compiles the source that Debian's library is made of.
if(WIN32)
  set(tinyxml ${CMAKE_SOURCE_DIR}/build/tinyxml)
  if(NOT EXISTS ${tinyxml}/tinyxml.cpp)
    message(FATAL_ERROR "${tinyxml} is missing: run scripts/fetch-tinyxml.sh")
  endif()
  add_library(tessary_tinyxml STATIC ${tinyxml}/tinyxml.cpp ${tinyxml}/tinyxmlerror.cpp
                                     ${tinyxml}/tinyxmlparser.cpp ${tinyxml}/tinystr.cpp)
  target_include_directories(tessary_tinyxml SYSTEM PUBLIC ${tinyxml})
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(tinyxml REQUIRED IMPORTED_TARGET tinyxml)
  pkg_check_modules(libpng REQUIRED IMPORTED_TARGET libpng)
  pkg_check_modules(zlib REQUIRED IMPORTED_TARGET zlib)
  add_library(tessary_tinyxml INTERFACE)
  target_link_libraries(tessary_tinyxml INTERFACE PkgConfig::tinyxml)
endif()
