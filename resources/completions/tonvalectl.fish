# Completion of tonvalectl for fish.

set -l commands list get set reset mute unmute toggle ignore unignore forget default show monitor

# Whether the command is one of the arguments and just its first argument is yet to come.
function __tonvalectl_wants_name
    set -l words (commandline -opc)
    test (count $words) -eq 2; and contains -- $words[2] $argv
end

function __tonvalectl_wants_percent
    set -l words (commandline -opc)
    test (count $words) -eq 3; and test $words[2] = set
end

complete -c tonvalectl -f
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -l help -s h -d 'Print a summary and exit'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version and exit'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a list -d 'Programs with volume, mute, level and process'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a get -d "One program's volume"
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a set -d 'Set the volume of a program'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a reset -d 'Set the volume of a program to 100%'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a mute -d 'Mute a program'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a unmute -d 'Unmute a program'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a toggle -d 'Mute or unmute a program'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a ignore -d 'Neither show nor touch a program'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a unignore -d 'Show a program again'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a forget -d 'Forget all settings of a program'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a default -d 'The volume that new programs begin with'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a show -d 'Bring the window to the front'
complete -c tonvalectl -n "not __fish_seen_subcommand_from $commands" -a monitor -d 'Print what changes'
complete -c tonvalectl -n '__fish_seen_subcommand_from list get monitor' -l json -d 'Print JSON'
complete -c tonvalectl -n '__fish_seen_subcommand_from list' -l all -d 'Also those that are not running'
complete -c tonvalectl -n '__fish_seen_subcommand_from list' -l names -d 'Nothing but names'
complete -c tonvalectl -n '__fish_seen_subcommand_from list' -l ignored -d 'The names of ignored programs'
complete -c tonvalectl -n '__tonvalectl_wants_name get set reset mute unmute toggle ignore forget' -a '(tonvalectl list --names --all 2>/dev/null)'
complete -c tonvalectl -n '__tonvalectl_wants_name unignore' -a '(tonvalectl list --names --ignored 2>/dev/null)'
complete -c tonvalectl -n __tonvalectl_wants_percent -a '0% 25% 50% 75% 100% +5% -5%'
complete -c tonvalectl -n '__tonvalectl_wants_name default' -a 'off 25% 50% 75% 100%'
