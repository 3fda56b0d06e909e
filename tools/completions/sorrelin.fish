# Completion of sorrelin for fish.

set -l verbs make append count info extract words

complete -c sorrelin -n "not __fish_seen_subcommand_from $verbs" -f
complete -c sorrelin -n "not __fish_seen_subcommand_from $verbs" -a make -d 'Make a new document'
complete -c sorrelin -n "not __fish_seen_subcommand_from $verbs" -a append -d 'Add pages to a document'
complete -c sorrelin -n "not __fish_seen_subcommand_from $verbs" -a count -d 'Print how many pages documents have'
complete -c sorrelin -n "not __fish_seen_subcommand_from $verbs" -a info -d 'Print what a document is'
complete -c sorrelin -n "not __fish_seen_subcommand_from $verbs" -a extract -d 'Write the pictures of pages'
complete -c sorrelin -n "not __fish_seen_subcommand_from $verbs" -a words -d 'Print the words of pictures'
complete -c sorrelin -n "not __fish_seen_subcommand_from $verbs" -l version -d 'Print the version'
complete -c sorrelin -l help -d 'Print help'

set -l pages '__fish_seen_subcommand_from make append'
complete -c sorrelin -n "$pages" -l dpi -x -a '150 200 300 600' -d 'Dots per inch in place of the own ones'
complete -c sorrelin -n "$pages" -l default-dpi -x -a '150 200 300 600' -d 'Dots per inch of files without'
complete -c sorrelin -n "$pages" -l page -x -a 'a3 a4 a5 a6 letter legal tabloid' -d 'Size of all pages'
complete -c sorrelin -n "$pages" -l fit -x -a 'within shrink fill stretch' -d 'How pictures stand on a page'
complete -c sorrelin -n "$pages" -l compression -x -a 'auto g4 flate runlength jpeg none' -d 'Coding'
complete -c sorrelin -n "$pages" -l quality -x -d 'Of JPEG coding, 1 to 100'
complete -c sorrelin -n "$pages" -l recode -d 'Code JPEG and Group 4 files anew'
complete -c sorrelin -n "$pages" -l sort -x -a 'natural name none' -d 'Order of the files'
complete -c sorrelin -n "$pages" -l jobs -x -d 'Pages to code at a time'
complete -c sorrelin -n "$pages" -l json -d 'Report as JSON'
complete -c sorrelin -n "$pages" -l keep-damaged -d 'Make pages of damaged pictures too'
complete -c sorrelin -n "$pages" -l verbose -d 'Print a line for each page'
complete -c sorrelin -n "$pages" -l quiet -d 'Print problems only'

set -l make '__fish_seen_subcommand_from make'
complete -c sorrelin -n "$make" -l title -x -d 'Title of the document'
complete -c sorrelin -n "$make" -l author -x -d 'Its author'
complete -c sorrelin -n "$make" -l subject -x -d 'Its subject'
complete -c sorrelin -n "$make" -l keywords -x -d 'Its keywords'
complete -c sorrelin -n "$make" -l force -d 'Replace the document if it exists'

complete -c sorrelin -n '__fish_seen_subcommand_from append' -l in-place -d 'Write to the document itself'

complete -c sorrelin -n '__fish_seen_subcommand_from info' -l json -d 'Print it as JSON'

set -l extract '__fish_seen_subcommand_from extract'
complete -c sorrelin -n "$extract" -l pages -x -d 'Only these, as in 1-3,7'
complete -c sorrelin -n "$extract" -l output -r -d 'Names of the files'
complete -c sorrelin -n "$extract" -l format -x -a 'png tiff bmp pnm jpeg' -d 'Of the files'
complete -c sorrelin -n "$extract" -l force -d 'Replace files that exist'
complete -c sorrelin -n "$extract" -l quiet -d 'Show no progress bar'

set -l words '__fish_seen_subcommand_from words'
complete -c sorrelin -n "$words" -l text -d 'Print plain text'
complete -c sorrelin -n "$words" -l language -x -d 'Of the text, as Tesseract names it'
