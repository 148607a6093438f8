# Header-only libraries stand in the build machine's own include folder, where the Windows toolchain must not look for
# anything else: osw_host_header(TARGET HEADER) gives the target's compiler a folder with just the one header or folder of
# headers.
function(osw_host_header target header)
  find_path(OSW_PARENT_OF_${header} ${header} PATHS /usr/include /usr/local/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(folder ${CMAKE_BINARY_DIR}/host-headers/${header})
  file(MAKE_DIRECTORY ${folder})
  file(CREATE_LINK ${OSW_PARENT_OF_${header}}/${header} ${folder}/${header} SYMBOLIC)
  target_include_directories(${target} SYSTEM PRIVATE ${folder})
endfunction()
