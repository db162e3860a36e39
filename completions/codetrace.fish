# SPDX-License-Identifier: MIT
# Completion for codetrace(1), for fish.

complete -c codetrace -s B -l binary -d 'Outputs the Code Trace binary data as hex.'
complete -c codetrace -s D -l dump -d 'Dumps all the checkpoints in the Code Trace file.'
complete -c codetrace -s H -l headers -d 'Dumps all the Code Trace file headers.'
complete -c codetrace -s h -l help -d 'Print this help message and exit.'
complete -c codetrace -s J -l json -d 'Outputs the Code Trace as a JSON document.'
complete -c codetrace -s o -l output -r -F -d 'The output is stored to the file <filename>.'
complete -c codetrace -s T -l text -d 'Outputs the Code Trace using a human-readable text format.'
complete -c codetrace -s V -l version -d 'Prints version information and exits.'
complete -c codetrace -s v -d 'Makes the Code Trace tool more verbose.'

# Traces stand before other files.
complete -c codetrace -f -k -a '(__fish_complete_suffix .ct)'
