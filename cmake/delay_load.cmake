# tavrin_delay_load(NAME...): gives for each library of Windows a target delayed_NAME, which loads it at
# the first call into it and not at the start of the process.
function(tavrin_delay_load)
  set(directory "${PROJECT_BINARY_DIR}/delayed")
  file(MAKE_DIRECTORY "${directory}")
  foreach(name ${ARGN})
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=lib${name}.a
      OUTPUT_VARIABLE usual OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND "${CMAKE_NM}" "${usual}"
      OUTPUT_VARIABLE symbols ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL " T [A-Za-z0-9_]+" functions "${symbols}")
    list(TRANSFORM functions REPLACE "^ T " "")
    list(JOIN functions "\n" exports)
    file(WRITE "${directory}/${name}.def" "LIBRARY ${name}.dll\nEXPORTS\n${exports}\n")
    # Relative names: the library's symbols hold them, and its bytes shall not depend on the place.
    execute_process(COMMAND "${CMAKE_DLLTOOL}" --input-def ${name}.def --output-delaylib lib${name}.a
      WORKING_DIRECTORY "${directory}" COMMAND_ERROR_IS_FATAL ANY)
    add_library(delayed_${name} INTERFACE)
    target_link_libraries(delayed_${name} INTERFACE "${directory}/lib${name}.a" delayimp)
  endforeach()
endfunction()

tavrin_delay_load(winhttp crypt32 iphlpapi ws2_32 version bcrypt)
