# Build step (cmake -P): ICU's data package without the parts the plug-in never reads, written as
# an assembly file that defines the package's symbol, to become the bundled libicudata.
#
# The plug-in uses ICU for regular expressions only. Those read the character properties, case
# mappings, normalization data and character names (the .icu, .nrm and .spp items at the top) and
# the break rules and dictionaries (brkitr/, for \X and (?w)); every such item stays, and so do the
# small general tables (root.res, en.res, the indexes, supplementalData and the like). Removed are
# the locale data (collation, currencies, language, region, unit and zone names, number spelling,
# transliteration, each locale's own formats) and the legacy character set converters.
#
# Variables: ICU_DATA_ARCHIVE (the target's libicudata.a), ICU_MAJOR, AR, OBJCOPY, ICUPKG,
# GENCCODE, WORK_DIR, OUTPUT (the .S file to write).
set(name icudt${ICU_MAJOR}l)
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

function(run)
  execute_process(COMMAND ${ARGV} WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE rc
    OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${ARGV}: ${out}")
  endif()
endfunction()

# libicudata.a holds one object whose read-only section is the whole package.
run("${AR}" x "${ICU_DATA_ARCHIVE}" ${name}_dat.o)
# icupkg wants the file named after the package; the trimmed one is written to trimmed/.
run("${OBJCOPY}" -O binary --only-section=.rodata ${name}_dat.o ${name}.dat)

execute_process(COMMAND "${ICUPKG}" -l ${name}.dat WORKING_DIRECTORY "${WORK_DIR}"
  OUTPUT_VARIABLE listing RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "icupkg cannot read ${ICU_DATA_ARCHIVE}")
endif()
string(REPLACE "\n" ";" items "${listing}")
set(removed "")
foreach(item ${items})
  if(item MATCHES "^(coll|curr|lang|region|rbnf|translit|unit|zone)/"
     OR item MATCHES "\\.cnv$"
     OR (item MATCHES "^[a-z][a-z][a-z]?(_[A-Za-z0-9_]+)?\\.res$"
         AND NOT item MATCHES "^(en|res_index)\\.res$"))
    string(APPEND removed "${item}\n")
  endif()
endforeach()
file(WRITE "${WORK_DIR}/removed.txt" "${removed}")
file(MAKE_DIRECTORY "${WORK_DIR}/trimmed")
run("${ICUPKG}" -r removed.txt ${name}.dat trimmed/${name}.dat)

# The package's entry point is the symbol icudtNN_dat, as in ICU's own data library.
run("${GENCCODE}" -a gcc -e icudt${ICU_MAJOR} -f ${name}_dat -d "${WORK_DIR}" trimmed/${name}.dat)
file(RENAME "${WORK_DIR}/${name}_dat.S" "${OUTPUT}")
file(REMOVE_RECURSE "${WORK_DIR}")
