#!/usr/bin/env bash
# The scheduler's health check of a desk: looks at the boards that captures complained of, drains the
# desk while one of them is dead, and takes it in again when all are there.
set -euo pipefail
desk=${SLURMD_NODENAME:?}
rack=$(cd "$(dirname "$0")" && pwd)
export SLURM_CONF=$rack/slurm.conf
. "$rack/boards.sh"

dead=
for suspect in "$rack/suspects/$desk"-*; do
    [ -e "$suspect" ] || continue
    take_board "$desk" "${suspect##*-}"
    if board_is_there; then
        rm -f "$suspect"
    else
        dead="$dead $VEK_BOARD"
    fi
done

reason=$(scontrol show node "$desk" | sed -n 's/^ *Reason=\(.*\) \[.*/\1/p')
if [ -n "$dead" ]; then
    [ -n "$reason" ] || scontrol update "nodename=$desk" state=drain "reason=dead boards:$dead"
elif [[ $reason == "dead boards:"* ]]; then
    scontrol update "nodename=$desk" state=resume
fi
