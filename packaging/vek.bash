# Completion of vek for bash.

_vek_replay() {
    [ "$before" != --listen ] || return
    case $word in
    -*) mapfile -t COMPREPLY < <(compgen -W "--listen --cut --json --help" -- "$word") ;;
    *)
        shopt -q extglob || shopt -s extglob
        mapfile -t COMPREPLY < <(compgen -f -X '!*.vekwire' -- "$word"; compgen -d -S / -- "$word")
        ;;
    esac
}

_vek_report() {
    case $before in
    --expected | --junit | --html | --sqlite) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    --label) ;;
    *)
        case $word in
        -*) mapfile -t COMPREPLY < <(compgen -W "--expected --label --junit --html --sqlite --json --help" -- "$word") ;;
        *) mapfile -t COMPREPLY < <(compgen -d -S / -- "$word") ;;
        esac
        ;;
    esac
}

_vek() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} list=
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "run check compare convert explain image nets new rehearse replay report --help --version" -- "$word")
        return
    fi
    if [ "${COMP_WORDS[1]}" = replay ]; then
        _vek_replay
        return
    fi
    if [ "${COMP_WORDS[1]}" = report ]; then
        _vek_report
        return
    fi
    case $before in
    --junit | --configuration)
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
    --trigger | --window | --scope | --depth | --units | --align | --by-edge | --from | --to | --ignore | --mask)
        return
        ;;
    --cable) list="FT2CH TR7QZ WINUSB LPT" ;;
    --format)
        local done=
        case $word in *,*) done=${word%,*}, ;; esac
        mapfile -t COMPREPLY < <(compgen -P "$done" -W "csv vcd rsx raw" -- "${word##*,}")
        return
        ;;
    -o | --output | --manifest | --record | --bench | --vcd | --capture)
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
    --clock | --label | --attempt | --wait | --force-after | --reply-timeout | --queue | --core | \
        --position | --amount | --windows | --expression | --match | --trigger | --location | --server | --device)
        return
        ;;
    esac
    case $word in
    -*)
        case ${COMP_WORDS[1]} in
        check) list="--bench --json --help" ;;
        explain)
            list="--vcd --bench --capture --core --position --amount --windows --expression --match --trigger
                --clock --device --json --help"
            ;;
        new) list="--clock --scope --output --depth --windows --position --trigger --units --lite --device --help" ;;
        rehearse)
            list="--clock --scope --output --depth --windows --position --trigger --units --lite --device
                --format --plain --help"
            ;;
        nets) list="--clocks --json --help" ;;
        image)
            list="--core --position --amount --windows --expression --match --trigger --device --frames
                --json --help"
            ;;
        run) list="--output --format --plain --clock --manifest --record --label --attempt --wait --force-after
            --reply-timeout --queue --paced --progress --core --position --amount --windows
            --expression --match --trigger --cable --location --server --attach --device --help" ;;
        convert) list="--plain --window --core --trigger --clock --configuration --manifest --json --help" ;;
        compare)
            list="--align --by-edge --from --to --window --core --clock --configuration --ignore --mask
                --junit --manifest --json --help"
            ;;
        esac
        ;;
    esac
    if [ -n "$list" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$list" -- "$word")
    else
        shopt -q extglob || shopt -s extglob
        local endings='vek|rsx'
        case ${COMP_WORDS[1]} in
        convert | compare) endings='csv|vcd|rsx|prn|raw' ;;
        nets | new | rehearse) endings=vcd ;;
        esac
        mapfile -t COMPREPLY < <(compgen -f -X "!*.@($endings)" -- "$word"; compgen -d -S / -- "$word")
    fi
}
complete -o filenames -F _vek vek
