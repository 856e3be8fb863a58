# What find_package(qordex) reads: defines the configuration loader, qordex::config.

find_package(RapidJSON QUIET)
if(NOT RapidJSON_FOUND)
  set(qordex_FOUND FALSE)
  set(qordex_NOT_FOUND_MESSAGE "RapidJSON is missing. On Debian, install rapidjson-dev.")
  return()
endif()

include(${CMAKE_CURRENT_LIST_DIR}/qordexTargets.cmake)
target_include_directories(qordex::config SYSTEM INTERFACE
                           ${RAPIDJSON_INCLUDE_DIRS} ${RapidJSON_INCLUDE_DIRS})
