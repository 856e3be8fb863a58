# What find_package(qordex) reads: defines the configuration loader, qordex::config.

include(${CMAKE_CURRENT_LIST_DIR}/qordexTargets.cmake)
