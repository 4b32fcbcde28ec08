# The target `tidy`: clang-tidy over src/ and client/, one stamp a file, so that only what changed is
# looked at.
file(GLOB_RECURSE tidy_headers CONFIGURE_DEPENDS
  "${PROJECT_SOURCE_DIR}/src/*.h" "${PROJECT_SOURCE_DIR}/client/*.h")
file(GLOB_RECURSE tidy_client CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/client/*.cpp")
set(tidy_stamps "")
foreach(source IN LISTS TAVRIN_SOURCES tidy_client)
  file(RELATIVE_PATH name "${PROJECT_SOURCE_DIR}" "${source}")
  set(stamp "${PROJECT_BINARY_DIR}/tidy/${name}.ok")
  get_filename_component(stamp_directory "${stamp}" DIRECTORY)
  file(MAKE_DIRECTORY "${stamp_directory}")
  add_custom_command(
    OUTPUT "${stamp}"
    COMMAND clang-tidy --quiet -p "${PROJECT_BINARY_DIR}" "${source}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
    DEPENDS "${source}" ${tidy_headers} "${PROJECT_SOURCE_DIR}/.clang-tidy"
    COMMENT "clang-tidy ${name}"
    VERBATIM)
  list(APPEND tidy_stamps "${stamp}")
endforeach()
add_custom_target(tidy DEPENDS ${tidy_stamps})
