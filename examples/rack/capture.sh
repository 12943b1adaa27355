#!/usr/bin/env bash
# One capture of the night: a task of the array, on the board that the scheduler gave it.
#
#   sbatch --array=1-N --gres=board:1 capture.sh CAPTURES RUNS
#
# CAPTURES has a line a capture: name, configuration, folder of its golden windows, trigger as a text
# ("-": that of the configuration). RUNS is a shared folder.
# Ends with 75 when the board failed or the run was killed: the capture is put back then.
set -euo pipefail
captures=$1 runs=$2
rack=${RACK:?the folder of boards.tsv}
. "$rack/boards.sh"

putBack=75
mostAttempts=10

# Not by SLURM_JOB_ID: that of the last task is the array's too, and shows the boards of all tasks.
index=$(scontrol -d show job "${SLURM_ARRAY_JOB_ID}_$SLURM_ARRAY_TASK_ID" |
    sed -n 's/.*GRES=board[^ ]*(IDX:\([0-9]*\)).*/\1/p')
take_board "$SLURMD_NODENAME" "$index"
# Servers of one desk would share a socket. A short name, since the socket lies in there.
export TMPDIR=${RACK_TMP:-/tmp}/$VEK_BOARD
mkdir -p -m 700 "$TMPDIR"

IFS=$'\t' read -r name configuration golden trigger < <(sed -n "${SLURM_ARRAY_TASK_ID}p" "$captures")
# The first number that is free: a capture that is submitted again counts on.
mkdir -p "$runs/$name"
attempt=1
while ! mkdir "$runs/$name/$attempt"; do
    [ "$attempt" -lt "$mostAttempts" ] || exit 1
    attempt=$((attempt + 1))
done 2>/dev/null
out=$runs/$name/$attempt
options=()
[ "$trigger" = - ] || options=(--trigger "$trigger")

status=0
vek run "$configuration" "${options[@]}" -o "$out/" --wait 60s --queue 0 --attempt "$attempt" \
    --manifest "$out/run.json" --label "name=$name" --label "board=$VEK_BOARD" || status=$?
case $status in
0) ;;
4 | 5 | 6 | 7 | 8 | 9 | 11)
    touch "$rack/suspects/$SLURMD_NODENAME-$index"
    [ "$attempt" -ge "$mostAttempts" ] || exit $putBack
    exit $status
    ;;
137) exit $putBack ;; # killed
*) exit $status ;;
esac

for window in "$out"/*_window*.csv; do
    vek compare "$golden/$(basename "$window")" "$window" --manifest "$out/run.json" || status=$?
done
exit $status
