# Completion of hba for fish. The tool itself knows what may follow; it answers with a candidate and what that is.
function __hba_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    set -l option (string match -r -- '^--[^=]*=' $current)
    for line in (command $words[1] __complete $words[2..-1] $current 2>/dev/null)
        switch $line
            case ':files*'
                string replace -r -- '^' "$option" (__fish_complete_path (string replace -- "$option" '' $current))
            case ':folders*'
                string replace -r -- '^' "$option" (__fish_complete_directories (string replace -- "$option" '' $current))
            case '*'
                echo $line
        end
    end
end
complete -c hba -f -a '(__hba_complete)'
