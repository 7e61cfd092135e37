# Moves a DLL's debug symbols to a file beside it, NAME.dll.debug, where debuggers look for them by the link that stays in
# the DLL. Both files are reproducible; they have to be together, because the link holds the sum of the symbols.
#
# Beside them NAME.pdb, for the debuggers of Windows: the linker writes into it where every function is. Lines it cannot
# tell, because this compiler describes them in another form only; clang's PDB has them, but belongs to another DLL.
function(split_debug_symbols target)
  target_compile_options(${target} PRIVATE -g)
  # Optimising at link time is compiling, too.
  target_link_options(${target} PRIVATE -g -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -Wl,--build-id
                      -Wl,--pdb=${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.pdb)
  set(dll ${target}.dll)
  # The date that the tools write into the file: without it, that of today.
  set(undated ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0)
  add_custom_command(
    TARGET ${target}
    POST_BUILD
    COMMAND ${undated} ${CMAKE_OBJCOPY} --only-keep-debug ${dll} ${dll}.debug
    COMMAND ${undated} ${CMAKE_STRIP} --strip-all ${dll}
    COMMAND ${undated} ${CMAKE_OBJCOPY} --add-gnu-debuglink=${dll}.debug ${dll}
    WORKING_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
    BYPRODUCTS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll}.debug ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.pdb
    VERBATIM)
endfunction()
