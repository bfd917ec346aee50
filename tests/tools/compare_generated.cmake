# Runs gendevices into WORK_DIR and fails when its output differs from the
# committed files in EXPECTED_DIR: a changed, missing or extra P*.inf/P*.zvi.
#
#   cmake -DGENDEVICES=... -DGPASM=... -DEXPECTED_DIR=... -DWORK_DIR=... -P compare_generated.cmake

cmake_minimum_required(VERSION 3.25)

foreach(name GENDEVICES GPASM EXPECTED_DIR WORK_DIR)
  if(NOT DEFINED ${name})
    message(FATAL_ERROR "compare_generated.cmake: ${name} is not set")
  endif()
endforeach()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
execute_process(
  COMMAND "${GENDEVICES}" --out "${WORK_DIR}" --gpasm "${GPASM}"
  RESULT_VARIABLE status
  OUTPUT_VARIABLE output
  ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "gendevices failed (${status}):\n${output}${errors}")
endif()

file(GLOB generated RELATIVE "${WORK_DIR}" "${WORK_DIR}/P*.inf" "${WORK_DIR}/P*.zvi")
file(GLOB committed RELATIVE "${EXPECTED_DIR}" "${EXPECTED_DIR}/P*.inf" "${EXPECTED_DIR}/P*.zvi")
list(LENGTH generated generated_count)
if(generated_count EQUAL 0)
  message(FATAL_ERROR "gendevices wrote no files:\n${output}")
endif()

set(problems "")
foreach(file IN LISTS generated)
  if(NOT file IN_LIST committed)
    string(APPEND problems "  missing from ${EXPECTED_DIR}: ${file}\n")
    continue()
  endif()
  file(SHA256 "${WORK_DIR}/${file}" fresh)
  file(SHA256 "${EXPECTED_DIR}/${file}" kept)
  if(NOT fresh STREQUAL kept)
    string(APPEND problems "  differs: ${file}\n")
  endif()
endforeach()
foreach(file IN LISTS committed)
  if(NOT file IN_LIST generated)
    string(APPEND problems "  not generated any more: ${file}\n")
  endif()
endforeach()

if(problems)
  message(FATAL_ERROR "committed device files are out of date "
                      "(regenerate with: gendevices --out data/inc):\n${problems}")
endif()
message(STATUS "${generated_count} generated files match ${EXPECTED_DIR}")
