# What every part of this repository is compiled with: the include roots and the warnings.
add_library(korvane_includes INTERFACE)
target_include_directories(korvane_includes INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src
                                                      ${PROJECT_SOURCE_DIR}/include)
target_compile_options(korvane_includes INTERFACE -Werror -Wall -Wextra -Wshadow -Wconversion)
if(WIN32)
  # The declarations of Windows 7, and the wide functions under their plain names, in every file alike.
  target_compile_definitions(korvane_includes INTERFACE UNICODE _UNICODE _WIN32_WINNT=0x0601)
endif()
# Builds in different folders give the same bytes.
target_compile_options(korvane_includes INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
