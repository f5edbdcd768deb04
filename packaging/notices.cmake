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
