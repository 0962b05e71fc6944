# What the shell offers behind "kestrant".

# What a command prints as JSON, from the store that the line names: the identifier and the title of each.
function __kestrant_rows
    set --local words (commandline --tokenize --cut-at-cursor --current-process)
    set --local store
    for index in (seq 2 (count $words))
        if string match --quiet -- '--store=*' $words[$index]
            set store $words[$index]
        else if test "$words[$index]" = --store -a $index -lt (count $words)
            set store --store $words[(math $index + 1)]
        end
    end
    kestrant $argv --json $store 2>/dev/null | awk -F'"' '/^ *"id": / { id = $4 } /^ *"title": / { print id "\t" $4 }'
end

# What has been written before the cursor: the command and what stands after it, without options.
function __kestrant_words
    set --local words (commandline --tokenize --cut-at-cursor --current-process)[2..-1]
    set --local takes_value --store --now --sort --list --search --title --notes --due --priority --alert --repeat \
        --start --end --calendar --configuration
    while set --query words[1]
        if contains -- $words[1] $takes_value
            set --erase words[1]
        else if not string match --quiet -- '-*' $words[1]
            echo $words[1]
        end
        set --erase words[1]
    end
end

function __kestrant_needs_command
    test (count (__kestrant_words)) -eq 0
end

# Whether so many subjects stand after one of these commands.
function __kestrant_at --argument-names subjects
    set --local words (__kestrant_words)
    test (count $words) -eq (math $subjects + 1); and contains -- $words[1] $argv[2..-1]
end

function __kestrant_in
    set --local words (__kestrant_words)
    contains -- "$words[1]" $argv
end

complete --command kestrant --no-files
complete --command kestrant --long-option store --exclusive --arguments 'evolution vdir:(__fish_complete_directories (string replace --regex "^vdir:" "" -- (commandline --current-token)))' --description 'Work on another store'
complete --command kestrant --short-option h --long-option help --description 'Tell how to call the program'
complete --command kestrant --condition 'not __kestrant_needs_command' --long-option json --description 'Print data as JSON'
complete --command kestrant --condition 'not __kestrant_needs_command' --long-option now --exclusive --description 'Take a fixed time for the present'
complete --command kestrant --condition __kestrant_needs_command --long-option version --description 'Print the version'
complete --command kestrant --condition __kestrant_needs_command --long-option toggle --description 'Open the panel, or close it'
complete --command kestrant --condition __kestrant_needs_command --long-option platform --exclusive --arguments 'wayland xcb' --description 'In place of what the session offers'
complete --command kestrant --condition __kestrant_needs_command --long-option new --description 'Open quick add'
complete --command kestrant --condition __kestrant_needs_command --long-option search --description 'Open the search field'
complete --command kestrant --long-option configuration --require-parameter --force-files --description 'Use other deployment values'

for line in \
    'list:The open reminders, in order' \
    'lists:The lists of reminders' \
    'add:Create a reminder' \
    'edit:Change a reminder' \
    'reschedule:Change when a reminder is due' \
    'move:Put a reminder into another list' \
    'flag:Flag a reminder' \
    'unflag:Remove the flag of a reminder' \
    'complete:Complete a reminder' \
    'delete:Delete a reminder' \
    'show:Everything about a reminder' \
    'recap:How many reminders were completed' \
    'agenda:The coming week, day by day' \
    'calendars:The calendars of events' \
    'add-event:Create an event' \
    'delete-event:Delete an event'
    set --local command (string split --max 1 : $line)
    complete --command kestrant --condition __kestrant_needs_command --arguments $command[1] --description $command[2]
end

complete --command kestrant --condition '__kestrant_at 0 edit reschedule move complete delete show; or __kestrant_in flag unflag' --arguments '(__kestrant_rows list)'
complete --command kestrant --condition '__kestrant_at 0 delete-event' --arguments '(__kestrant_rows agenda --no-reminders)'
complete --command kestrant --condition '__kestrant_at 1 move' --arguments '(__kestrant_rows lists)'
complete --command kestrant --condition '__kestrant_at 1 reschedule' --arguments 'none today tomorrow'

complete --command kestrant --condition '__kestrant_in list' --long-option sort --exclusive --arguments 'manual dueDate priority title creationOldestFirst creationNewestFirst' --description 'In this order'
complete --command kestrant --condition '__kestrant_in list' --long-option today --description 'Due today'
complete --command kestrant --condition '__kestrant_in list' --long-option overdue --description 'Overdue'
complete --command kestrant --condition '__kestrant_in list' --long-option flagged --description 'Flagged'
complete --command kestrant --condition '__kestrant_in list' --long-option search --exclusive --description 'With this text'
complete --command kestrant --condition '__kestrant_in list add edit' --long-option list --exclusive --arguments '(__kestrant_rows lists)' --description 'A list'
complete --command kestrant --condition '__kestrant_in add' --long-option flagged --description 'Flag it'
complete --command kestrant --condition '__kestrant_in add' --long-option literal --description 'Understand no words of the title'
complete --command kestrant --condition '__kestrant_in add' --long-option priority --exclusive --arguments 'high normal low' --description 'How important it is'
complete --command kestrant --condition '__kestrant_in edit' --long-option priority --exclusive --arguments 'high normal low none' --description 'How important it is'
complete --command kestrant --condition '__kestrant_in add edit' --long-option due --exclusive --arguments 'none today tomorrow' --description 'When it is due'
complete --command kestrant --condition '__kestrant_in add edit' --long-option alert --exclusive --arguments 'none 0 5m 15m 1h 1d 09:00 18:00' --description 'When to remind of it'
complete --command kestrant --condition '__kestrant_in add edit' --long-option repeat --exclusive --arguments 'none daily weekly monthly yearly' --description 'How often it repeats'
complete --command kestrant --condition '__kestrant_in edit' --long-option title --exclusive --description 'The new title'
complete --command kestrant --condition '__kestrant_in edit' --long-option notes --exclusive --description 'The new notes'
complete --command kestrant --condition '__kestrant_in recap' --long-option day --description 'Today'
complete --command kestrant --condition '__kestrant_in recap' --long-option week --description 'This week'
complete --command kestrant --condition '__kestrant_in recap' --long-option month --description 'This month'
complete --command kestrant --condition '__kestrant_in recap' --long-option year --description 'This year'
complete --command kestrant --condition '__kestrant_in agenda' --long-option all --description 'The past and the coming year'
complete --command kestrant --condition '__kestrant_in agenda' --long-option reminders --description 'With the reminders that are due'
complete --command kestrant --condition '__kestrant_in agenda' --long-option no-reminders --description 'Events alone'
complete --command kestrant --condition '__kestrant_in add' --long-option make-list --description 'Make a list that is named and does not exist'
complete --command kestrant --condition '__kestrant_in add-event' --long-option start --exclusive --description 'When it begins'
complete --command kestrant --condition '__kestrant_in add-event' --long-option end --exclusive --description 'When it ends'
complete --command kestrant --condition '__kestrant_in add-event' --long-option all-day --description 'It takes whole days'
complete --command kestrant --condition '__kestrant_in add-event' --long-option calendar --exclusive --arguments '(__kestrant_rows calendars)' --description 'Into this calendar'
