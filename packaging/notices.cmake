# SPDX-License-Identifier: MIT
# The notices of what our programs are made of besides our own code, as Debian ships them with each.
set(TESSARY_NOTICES
  libcli11-dev nlohmann-json3-dev libspdlog-dev libfmt-dev libbitstream-dev libtinyxml-dev)
if(WIN32)
  # Linked in; elsewhere the platform's own libraries.
  list(APPEND TESSARY_NOTICES mingw-w64-common g++-mingw-w64-x86-64-posix)
endif()

# tessary_install_notices(FOLDER)
function(tessary_install_notices folder)
  foreach(package IN LISTS TESSARY_NOTICES)
    set(copyright /usr/share/doc/${package}/copyright)
    if(NOT EXISTS ${copyright})
      message(FATAL_ERROR "${copyright} is missing: run scripts/setup.sh")
    endif()
    install(FILES ${copyright} DESTINATION ${folder} RENAME ${package}.txt)
  endforeach()
endfunction()

# tessary_install_sbom(FOLDER NAME): what is in the package, as NAME; nothing where `reuse` is not
# installed.
function(tessary_install_sbom folder name)
  find_program(TESSARY_REUSE reuse)
  if(NOT TESSARY_REUSE)
    message(STATUS "No software bill of materials: reuse is not installed")
    return()
  endif()
  set(sbom ${CMAKE_BINARY_DIR}/${name})
  install(CODE "execute_process(
    COMMAND ${CMAKE_COMMAND} -D REUSE=${TESSARY_REUSE} -D SOURCE=${CMAKE_SOURCE_DIR}
            -D VERSION=${PROJECT_VERSION} \"-DPACKAGES=${TESSARY_NOTICES}\" -D OUTPUT=${sbom}
            -P ${CMAKE_SOURCE_DIR}/packaging/sbom.cmake
    COMMAND_ERROR_IS_FATAL ANY)")
  install(FILES ${sbom} DESTINATION ${folder})
endfunction()
