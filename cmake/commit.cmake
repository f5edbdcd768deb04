# SPDX-License-Identifier: MIT
# Writes HEADER with the commit that SOURCE, if it is a checkout, stands at; only when it has changed.
set(commit "")
find_program(git git)
if(git AND EXISTS ${SOURCE}/.git)
  execute_process(COMMAND ${git} -C ${SOURCE} describe --always --dirty --abbrev=10 --exclude=*
                  OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
file(CONFIGURE OUTPUT ${HEADER} CONTENT "#define TESSARY_COMMIT \"${commit}\"\n")
