# What programs and DLLs are linked with that are handed out beside korvane.dll: nothing but the system's own DLLs to
# load, the hardening that the system's loader and the compiler offer, the version that Explorer shows, and the same
# bytes from the same source.
function(ship_program target description)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    set(SHIPPED_TYPE VFT_APP)
    set(SHIPPED_SUFFIX exe)
  else()
    set(SHIPPED_TYPE VFT_DLL)
    set(SHIPPED_SUFFIX dll)
  endif()
  get_target_property(SHIPPED_NAME ${target} OUTPUT_NAME)
  if(NOT SHIPPED_NAME)
    set(SHIPPED_NAME ${target})
  endif()
  set(SHIPPED_DESCRIPTION ${description})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/program_version.rc.in ${target}_version.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  # No _FORTIFY_SOURCE: none of the library's sources calls a function in a way that the headers of mingw then check, so
  # that it would promise a protection that is not there.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:C,CXX>:-fstack-protector-strong>)
  target_link_options(
    ${target}
    PRIVATE
    -static
    -s
    -fstack-protector-strong
    -Wl,--dynamicbase,--high-entropy-va,--nxcompat
    -Wl,--no-insert-timestamp)
endfunction()
