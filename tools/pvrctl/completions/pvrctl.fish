# Completion of pvrctl for fish: pvrctl itself tells what may stand there.
function __pvrctl_complete
    set -l words (commandline -opc) (commandline -ct)
    set -l before (string match -r -- '^-[^=]*=' $words[-1])
    set -l value (string replace -- "$before" '' $words[-1])
    for line in (command $words[1] complete -- $words[2..-1] 2>/dev/null)
        switch $line
            case ':files'
                string replace -r -- '^' "$before" (__fish_complete_path $value)
            case ':folders'
                string replace -r -- '^' "$before" (__fish_complete_directories $value)
            case '*'
                echo $line
        end
    end
end
complete -c pvrctl -f -a '(__pvrctl_complete)'
