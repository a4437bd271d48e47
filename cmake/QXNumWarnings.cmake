# Compiler flags shared by every target of the project.
add_library(qxnum_flags INTERFACE)
target_compile_options(qxnum_flags INTERFACE
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall -Wextra -Wnon-virtual-dtor -Woverloaded-virtual>)
if(QXNUM_PEDANTIC)
  target_compile_options(qxnum_flags INTERFACE
    $<$<CXX_COMPILER_ID:GNU,Clang>:-Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast>
    $<$<CXX_COMPILER_ID:GNU>:-Wuseless-cast>)  # clang has no -Wuseless-cast
endif()
if(QXNUM_WERROR)
  target_compile_options(qxnum_flags INTERFACE $<$<CXX_COMPILER_ID:GNU,Clang>:-Werror>)
endif()
if(QXNUM_SANITIZE)
  target_compile_options(qxnum_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
                         -fno-omit-frame-pointer)
  target_link_options(qxnum_flags INTERFACE -fsanitize=address,undefined)
endif()
