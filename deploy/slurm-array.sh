#!/bin/sh
# SPDX-License-Identifier: MIT
# An archive on a Slurm cluster: one task of the array converts one share of the manifest.
#
#   sbatch --array=1-16 --requeue deploy/slurm-array.sh list.txt -o '/srv/subtitles/${input}.vtt'
#
# Manifest, recordings and outputs lie where every node sees them. A task that was killed and requeued
# goes on where it was; sbatch the same again to try what has failed. What follows the manifest goes
# to 'txsub batch'.
#SBATCH --job-name=subtitles
#SBATCH --cpus-per-task=1
set -eu
exec "${TXSUB:-txsub}" batch --jobs "${SLURM_CPUS_PER_TASK:-1}" \
  --shard "$SLURM_ARRAY_TASK_ID/$SLURM_ARRAY_TASK_COUNT" "$@"
