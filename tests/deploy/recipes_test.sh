#!/bin/bash
# SPDX-License-Identifier: MIT
# Runs a recipe of deploy/ with its real engine and compares the result with a serial run.
#   recipes_test.sh TXSUB slurm|parallel|snakemake [RECORDINGS [SHARES [KILLS]]]
# 77: the engine is not installed, or cannot run here.
set -euo pipefail
txsub=$1 engine=$2 recordings=${3:-400} shares=${4:-4} kills=${5:-2}
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
export TXSUB=$txsub

skip() {
  echo "skipped: $1"
  exit 77
}

stop_slurm() {
  for daemon in slurmd slurmctld munged; do
    [ -f "$work/$daemon.pid" ] || continue
    local id
    id=$(cat "$work/$daemon.pid")
    kill "$id" 2>/dev/null || true
    for ((i = 0; i < 50; ++i)); do
      kill -0 "$id" 2>/dev/null || break
      sleep 0.1
    done
  done
}

cleanup() {
  stop_slurm
  rm -rf "$work"
}
trap cleanup EXIT

make_recordings() {
  mkdir "$work/recordings"
  for ((i = 0; i < recordings; ++i)); do
    case $((i % 4)) in
      0) sample=captions ;;
      1) sample=teletext ;;
      2) sample=dvb ;;
      3) sample=captions-708 ;;
    esac
    ln -s "$root/samples/$sample.ts" "$work/recordings/$i.ts"
  done
  ls "$work"/recordings/*.ts >"$work/list.txt"
  echo "$work/recordings/gone.ts" >>"$work/list.txt"  # fails, and stops nothing
}

# Every file of a folder with its sum.
sums() { (cd "$1" && find . -type f | sort | xargs sha256sum); }

start_slurm() {
  for program in munged slurmctld slurmd sbatch squeue; do
    PATH=$PATH:/usr/sbin command -v "$program" >/dev/null || skip "there is no $program"
  done
  PATH=$PATH:/usr/sbin
  dd if=/dev/urandom of="$work/munge.key" bs=128 count=1 status=none
  chmod 600 "$work/munge.key"
  munged --force --key-file="$work/munge.key" --socket="$work/munge.socket" \
    --pid-file="$work/munged.pid" --seed-file="$work/munge.seed" --log-file="$work/munged.log" ||
    skip "munged does not start here"
  local port=$((20000 + RANDOM % 20000)) host user
  host=$(hostname -s)
  user=$(id -un)
  mkdir "$work/state" "$work/spool"
  cat >"$work/slurm.conf" <<END
ClusterName=test
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$port
SlurmdPort=$((port + 1))
SlurmUser=$user
SlurmdUser=$user
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$work/munge.socket
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
SlurmctldLogFile=$work/slurmctld.log
SlurmdLogFile=$work/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=batch_sched_delay=0,defer_batch
MpiDefault=none
ReturnToService=2
MinJobAge=300
JobRequeue=1
SlurmdParameters=config_overrides
NodeName=$host NodeAddr=127.0.0.1 CPUs=4 State=UNKNOWN
PartitionName=test Nodes=ALL Default=YES MaxTime=INFINITE State=UP
END
  export SLURM_CONF=$work/slurm.conf
  slurmctld && slurmd || skip "slurm does not start here: $(tail -n 1 "$work/slurmctld.log" 2>/dev/null)"
  for ((i = 0; i < 100; ++i)); do
    [ "$(sinfo -h -o %T 2>/dev/null)" = idle ] && return
    sleep 0.1
  done
  skip "slurm has no node here: $(tail -n 1 "$work/slurmd.log")"
}

# Some of the workers of a job, at random moments.
kill_workers() { # JOB
  while [ "$killed" -lt "$kills" ] && [ -n "$(squeue -h -j "$1" 2>/dev/null)" ]; do
    sleep "0.$((RANDOM % 4))"
    pkill -KILL -o -f "^$txsub batch --jobs .* $work/list.txt " && killed=$((killed + 1)) || true
  done
}

run_slurm() {
  start_slurm
  cd "$work"  # where Slurm writes what tasks say
  local killed=0
  for attempt in 1 2 3; do
    job=$(sbatch --parsable --array=1-"$shares" --requeue "$root/deploy/slurm-array.sh" \
      "$work/list.txt" -o "$work/out/\${input}" -- --all)
    [ "$attempt" = 3 ] || kill_workers "$job"
    while [ -n "$(squeue -h -j "$job" 2>/dev/null)" ]; do sleep 0.2; done
  done
  echo "slurm: $killed workers were killed"
}

run_parallel() {
  command -v parallel >/dev/null || skip "there is no GNU parallel"
  # One recording fails, and so its share.
  "$root/deploy/parallel.sh" "$shares" "$work/list.txt" -o "$work/out/\${input}" -- --all ||
    echo "a share has failed, as it should"
}

run_snakemake() {
  command -v snakemake >/dev/null || skip "there is no snakemake"
  cd "$work"
  sed -i '$d' "$work/list.txt"
  snakemake --quiet progress -s "$root/deploy/Snakefile" --cores 2 --config "txsub=$txsub" \
    "manifest=$work/list.txt" "shares=$shares" "output=$work/out/\${input}.ttml"
}

make_recordings
options=(-o "$work/serial/\${input}" -- --all)
[ "$engine" = snakemake ] && options=(-o "$work/serial/\${input}.ttml")
"$txsub" batch "$work/list.txt" --quiet --jobs 1 --results "$work/serial.jsonl" "${options[@]}" ||
  echo "one recording fails, as it should"
"run_$engine"

diff <(sums "$work/serial") <(sums "$work/out")
cat "$work"/list.txt.results*.jsonl >"$work/all.jsonl"
settled=$(grep -c '"status":"done"' "$work/all.jsonl")
[ "$settled" = "$recordings" ] || {
  echo "$settled results of $recordings recordings: some have been done twice, or not at all"
  exit 1
}
echo "$engine: $recordings recordings in $shares shares, equal to a serial run, each done once"
