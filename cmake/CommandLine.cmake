# Files that read a command line. They run once; optimizing what they include takes longer than compiling it.
function(korvel_command_line)
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS "$<$<CONFIG:Release>:-O1>")
endfunction()
