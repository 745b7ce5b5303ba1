# Install step: copies the plug-in's shared libraries that a FileMaker Server on Ubuntu 22.04 or
# later does not provide (ICU's: every Debian or Ubuntu release has its own version) beside the
# installed plug-in, under the names the loader asks for. The plug-in's search path is its own
# folder, and it is an RPATH rather than a RUNPATH, so it also serves the libraries' own
# dependencies (libicuuc needs libicudata). ICU's data library, if the build made a trimmed one
# (RAVELIN_ICU_DATA), is that one.
file(GET_RUNTIME_DEPENDENCIES
  LIBRARIES "${RAVELIN_PLUGIN}"
  RESOLVED_DEPENDENCIES_VAR resolved
  UNRESOLVED_DEPENDENCIES_VAR unresolved
  PRE_INCLUDE_REGEXES "^libicu"
  PRE_EXCLUDE_REGEXES ".*")
if(unresolved)
  message(FATAL_ERROR "Cannot find libraries to bundle: ${unresolved}")
endif()
set(destination "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")
foreach(library ${resolved})
  get_filename_component(name "${library}" NAME)
  file(REAL_PATH "${library}" real)
  if(RAVELIN_ICU_DATA AND name MATCHES "^libicudata\\.")
    set(real "${RAVELIN_ICU_DATA}")
  endif()
  message(STATUS "Bundling: ${destination}/${name}")
  file(COPY_FILE "${real}" "${destination}/${name}" ONLY_IF_DIFFERENT)
endforeach()
