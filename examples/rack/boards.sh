# The boards of the rack, for the scripts beside this one. boards.tsv has a line a board:
#   desk  index  name  server  cable  location  device
# where index is that of its file in gres.conf, and "-" stands for an empty field.

rack=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# Sets the variables that vek run takes its board from. Arguments: desk, index.
take_board() {
    local desk index name server cable location device
    while IFS=$'\t' read -r desk index name server cable location device; do
        [ "$desk/$index" = "$1/$2" ] || continue
        export VEK_BOARD=$name
        [ "$server" = - ] || export VEK_SERVER=$server
        [ "$cable" = - ] || export VEK_CABLE=$cable
        [ "$location" = - ] || export VEK_LOCATION=$location
        [ "$device" = - ] || export VEK_DEVICE=$device
        return 0
    done <"$rack/boards.tsv"
    echo "boards.tsv has no board $2 of $1" >&2
    return 1
}

# Whether the server of the board that was taken listens on this desk. It is not connected to: it
# has one client at a time, which may be at work.
board_is_there() {
    grep -qi ":$(printf %04X "${VEK_SERVER##*:}") [0-9A-F]*:0000 0A " /proc/net/tcp
}
