#!/bin/sh
# SPDX-License-Identifier: MIT
# An archive with GNU parallel: as many shares of the manifest as there are machines, or cores.
#
#   deploy/parallel.sh 8 list.txt -o 'subtitles/${input}.vtt'
#
# With PARALLEL='--sshloginfile nodes' in the environment the shares go to other machines. What
# follows the number of shares goes to 'txsub batch'.
set -eu
shares=$1
shift
quoted=""
for word in "$@"; do quoted="$quoted '$(printf '%s' "$word" | sed "s/'/'\\\\''/g")'"; done
seq "$shares" |
  parallel --will-cite "${TXSUB:-txsub} batch --jobs 1 --shard {}/$shares $quoted"
