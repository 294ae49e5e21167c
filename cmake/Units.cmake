# Builds that only check take several files of a folder as one unit, which spares most of the reading of headers; what is
# shipped is compiled file by file, so that a missing #include is seen.

# orv_compile_alone(<files>)
# Files that give a name of their own to something else than another file of the folder does.
function(orv_compile_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
