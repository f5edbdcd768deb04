# SPDX-License-Identifier: MIT
# What is in a package, for machines (SPDX 2.1): our own files as `reuse` knows them, and the packages
# that they are built with, in the versions of this build. A script that installing runs:
#   cmake -D REUSE=program -D SOURCE=folder -D VERSION=x.y.z -D PACKAGES=a;b -D OUTPUT=file -P sbom.cmake
execute_process(COMMAND ${REUSE} --root ${SOURCE} spdx
                OUTPUT_VARIABLE document COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "Creator: Person: Anonymous ()\n" "" document "${document}")
string(REPLACE "Organization: Anonymous ()" "Organization: The Tessary developers" document
       "${document}")
string(REGEX REPLACE "DocumentName: [^\n]*" "DocumentName: tessary-subtitle-converter-${VERSION}"
       document "${document}")
foreach(package IN LISTS PACKAGES)
  execute_process(COMMAND dpkg-query -W -f \${Version} ${package}
                  OUTPUT_VARIABLE version COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "[^A-Za-z0-9.-]" "-" id ${package})
  string(APPEND document "
PackageName: ${package}
SPDXID: SPDXRef-Package-${id}
PackageVersion: ${version}
PackageSupplier: Organization: Debian
PackageDownloadLocation: https://packages.debian.org/bookworm/${package}
FilesAnalyzed: false
PackageLicenseConcluded: NOASSERTION
PackageLicenseDeclared: NOASSERTION
PackageCopyrightText: NOASSERTION
Relationship: SPDXRef-DOCUMENT DESCRIBES SPDXRef-Package-${id}
")
endforeach()
file(WRITE ${OUTPUT} "${document}")
