# What the shell offers behind "kestrant".

# The identifiers that a command prints as JSON, from the store that the line names.
_kestrant_identifiers() {
    local index store=()
    for ((index = 1; index < cword; index++)); do
        case ${words[index]} in
            --store) store=(--store "${words[index + 1]}") ;;
            --store=*) store=("${words[index]}") ;;
        esac
    done
    "${words[0]}" "$@" --json "${store[@]}" 2>/dev/null | sed -n 's/^ *"id": "\(.*\)",\{0,1\}$/\1/p'
}

_kestrant() {
    local cur prev words cword split
    _init_completion -s -n : || return

    local commands="list lists add edit reschedule move flag unflag complete delete show recap
        agenda calendars add-event delete-event"
    local command='' subjects=0 index offered=''
    for ((index = 1; index < cword; index++)); do
        case ${words[index]} in
            --store | --now | --sort | --list | --search | --title | --notes | --due | --priority | --alert | --repeat | \
                --start | --end | --calendar | --configuration | --platform)
                ((index++))
                ;;
            -*) ;;
            *)
                if [[ $command ]]; then
                    ((subjects++))
                else
                    command=${words[index]}
                fi
                ;;
        esac
    done

    case $prev in
        --store)
            if [[ $cur == vdir:* ]]; then
                cur=${cur#vdir:}
                _filedir -d
                COMPREPLY=("${COMPREPLY[@]/#/vdir:}")
                cur=vdir:$cur
            else
                mapfile -t COMPREPLY < <(compgen -W 'vdir: evolution' -- "$cur")
            fi
            compopt -o nospace
            __ltrim_colon_completions "$cur"
            return
            ;;
        --configuration) _filedir json; return ;;
        --sort) offered='manual dueDate priority title creationOldestFirst creationNewestFirst' ;;
        --priority)
            offered='high normal low'
            [[ $command != edit ]] || offered+=' none'
            ;;
        --repeat) offered='none daily weekly monthly yearly' ;;
        --alert) offered='none 0 5m 15m 1h 1d 09:00 18:00' ;;
        --due) offered='none today tomorrow' ;;
        --platform) offered='wayland xcb' ;;
        --list) offered=$(_kestrant_identifiers lists) ;;
        --calendar) offered=$(_kestrant_identifiers calendars) ;;
        --now | --search | --title | --notes | --start | --end) return ;;
        *)
            # An option that takes no value was given one.
            ! $split || return
            if [[ $cur == -* ]]; then
                case $command in
                    '') offered='--platform --toggle --new --search --version' ;;
                    list) offered='--sort --list --today --overdue --flagged --search' ;;
                    add) offered='--due --priority --list --alert --repeat --flagged --literal --make-list' ;;
                    edit) offered='--title --notes --due --list --priority --alert --repeat' ;;
                    recap) offered='--day --week --month --year' ;;
                    agenda) offered='--all --reminders --no-reminders' ;;
                    add-event) offered='--start --end --all-day --calendar' ;;
                esac
                offered+=' --store --configuration --help'
                [[ ! $command ]] || offered+=' --json --now'
            elif [[ ! $command ]]; then
                offered=$commands
            else
                case $command:$subjects in
                    edit:0 | reschedule:0 | move:0 | flag:* | unflag:* | complete:0 | delete:0 | show:0)
                        offered=$(_kestrant_identifiers list)
                        ;;
                    delete-event:0) offered=$(_kestrant_identifiers agenda --no-reminders) ;;
                    move:1) offered=$(_kestrant_identifiers lists) ;;
                    reschedule:1) offered='none today tomorrow' ;;
                esac
            fi
            ;;
    esac
    local IFS=$' \t\n'
    mapfile -t COMPREPLY < <(compgen -W "$offered" -- "$cur")
    __ltrim_colon_completions "$cur"
} &&
    complete -F _kestrant kestrant
