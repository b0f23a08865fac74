# Completion of quirn for fish.
complete -c quirn -s w -l wait -d 'Wait until the files are closed'
complete -c quirn -s l -l line -x -d 'The place in the next file: LINE or LINE:COLUMN'
complete -c quirn -s r -l recent -d 'Enter the files in the list of recent files'
complete -c quirn -s d -l change-dir -d 'Let open panels begin in the folder of the file'
complete -c quirn -s n -l new-window -d 'Open a window for each file'
complete -c quirn -s e -l environment -d 'Let commands have the environment of this process'
complete -c quirn -s h -l help -d 'Print the options'
complete -c quirn -s V -l version -d 'Print the version'
