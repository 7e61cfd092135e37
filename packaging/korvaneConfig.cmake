# find_package(korvane CONFIG) gives the target korvane::korvane.
if(CMAKE_SIZEOF_VOID_P AND NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(korvane_FOUND FALSE)
  set(korvane_NOT_FOUND_MESSAGE "korvane is for 64-bit Windows")
  return()
endif()

if(NOT TARGET korvane::korvane)
  get_filename_component(korvane_root "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
  add_library(korvane::korvane SHARED IMPORTED)
  if(MSVC)
    set(korvane_import_library "${korvane_root}/lib/korvane.lib")
  else()
    set(korvane_import_library "${korvane_root}/lib/libkorvane.dll.a")
  endif()
  set_target_properties(
    korvane::korvane
    PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${korvane_root}/include"
               IMPORTED_LOCATION "${korvane_root}/bin/korvane.dll"
               IMPORTED_IMPLIB "${korvane_import_library}")
  unset(korvane_import_library)
  unset(korvane_root)
endif()
