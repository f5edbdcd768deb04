#!/bin/sh
# SPDX-License-Identifier: MIT
# Writes the binary interface of a libtxsub.so as text:  dump_abi.sh LIBRARY > library/libtxsub-1.abi
# The file there is that of the first version: interfaces are only ever added to.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
abidw --headers-dir "$here/include" --drop-private-types --exported-interfaces-only --no-corpus-path \
  --no-comp-dir-path --no-show-locs --no-elf-needed "$1"
