# Header libraries of the building system, for a target that is another one.

# Makes TARGET, an interface target with the one folder NAME of /usr/include in its include path: behind a link in a
# folder of its own, so that the building system's other headers stay out of reach.
function(zelmar_kor_host_headers target name)
  if(TARGET ${target})
    return()
  endif()
  if(NOT EXISTS /usr/include/${name})
    message(FATAL_ERROR "/usr/include/${name} is missing: install the development package of ${target}")
  endif()
  set(folder ${CMAKE_BINARY_DIR}/host_headers/${name})
  file(MAKE_DIRECTORY ${folder})
  file(CREATE_LINK /usr/include/${name} ${folder}/${name} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE ${folder})
endfunction()
