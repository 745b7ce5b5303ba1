# The layering of tools/layers.txt, enforced by the build (tests/check_layers.sh reads the same
# file). Every layer compiles against an include root of its own, build/layers/<layer>/, that
# holds links to its own folder and the folders it may include, and nothing else: an include of
# any other folder of the project does not compile. Each plug-in folder is one library, linked to
# the libraries of the folders it may use; and each is linked once on its own with only those
# (layer_link_<folder>), so a call into any other folder does not link either.
#
# Defines PLUGIN_OBJECTS, the objects of every plug-in folder, for Ravelin.fmx, the tests and the
# fuzzers. Included after the substitute host's targets (sim_objects, fmsim), whose sources it
# restricts the same way, layer by layer.

file(STRINGS ${CMAKE_SOURCE_DIR}/tools/layers.txt layer_lines REGEX "^[^#].*:")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tools/layers.txt)

set(PLUGIN_LAYERS)
foreach(line ${layer_lines})
  string(REGEX MATCH "^([^:]+):(.*)$" matched "${line}")
  set(layer ${CMAKE_MATCH_1})
  string(STRIP "${CMAKE_MATCH_2}" allowed)
  separate_arguments(allowed)
  string(REPLACE "/" "_" id ${layer})
  set(LAYER_ALLOWED_${id} ${allowed})
  # The include root: the layer itself and what it may include.
  set(root ${CMAKE_BINARY_DIR}/layers/${id})
  file(REMOVE_RECURSE ${root})
  foreach(folder ${layer} ${allowed})
    get_filename_component(parent ${root}/${folder} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${root}/${folder} SYMBOLIC)
  endforeach()
  set(LAYER_ROOT_${id} ${root})
  if(NOT layer MATCHES "^(sim/|host$)")
    list(APPEND PLUGIN_LAYERS ${layer})
  endif()
endforeach()

# --- The plug-in: one library per folder ---------------------------------------------------
set(PLUGIN_OBJECTS)
foreach(layer ${PLUGIN_LAYERS})
  file(GLOB layer_sources CONFIGURE_DEPENDS ${layer}/*.cpp)
  add_library(layer_${layer} OBJECT ${layer_sources})
  set_property(TARGET layer_${layer} PROPERTY INCLUDE_DIRECTORIES ${LAYER_ROOT_${layer}})
  set_target_properties(layer_${layer} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  # Calls into the host and the libraries go straight through the GOT, without a PLT stub: the
  # plug-in makes several host calls per character or cell of work, and everything is bound at
  # load time anyway (the host's functions must all be there).
  target_compile_options(layer_${layer} PRIVATE -fno-plt)
  target_link_libraries(layer_${layer} PUBLIC ICU::uc ICU::i18n Threads::Threads)
  list(APPEND PLUGIN_OBJECTS $<TARGET_OBJECTS:layer_${layer}>)
endforeach()
foreach(layer ${PLUGIN_LAYERS})
  set(below)
  foreach(folder ${LAYER_ALLOWED_${layer}})
    if(TARGET layer_${folder})
      list(APPEND below layer_${folder})
    endif()
  endforeach()
  if(below)
    target_link_libraries(layer_${layer} PUBLIC ${below})
  endif()
  # A folder linked with only the folders it may use: every symbol must resolve. Clang's
  # sanitizers leave their runtime to the executable, so there nothing can be checked this way.
  if(NOT (RAVELIN_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang"))
    set(objects $<TARGET_OBJECTS:layer_${layer}>)
    foreach(folder ${below})
      list(APPEND objects $<TARGET_OBJECTS:${folder}>)
    endforeach()
    add_library(layer_link_${layer} SHARED ${objects})
    target_link_libraries(layer_link_${layer} PRIVATE FMWrapper ICU::uc ICU::i18n Threads::Threads)
    target_link_options(layer_link_${layer} PRIVATE -Wl,-z,defs)
    set_target_properties(layer_link_${layer} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/layers)
  endif()
endforeach()

# --- The substitute host: one include root per layer, source by source ---------------------
set_property(TARGET sim_objects PROPERTY INCLUDE_DIRECTORIES "")
get_target_property(sim_sources sim_objects SOURCES)
foreach(source ${sim_sources})
  string(REGEX MATCH "/(sim/[^/]+)/[^/]+$" matched "${source}")
  string(REPLACE "/" "_" id "${CMAKE_MATCH_1}")
  if(NOT DEFINED LAYER_ROOT_${id})
    message(FATAL_ERROR "${source}: its folder is not a layer of tools/layers.txt")
  endif()
  set_source_files_properties(${source} PROPERTIES INCLUDE_DIRECTORIES ${LAYER_ROOT_${id}})
endforeach()
set_property(TARGET fmsim shell_objects PROPERTY INCLUDE_DIRECTORIES ${LAYER_ROOT_sim_shell})
