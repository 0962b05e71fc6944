# Deployment values: what kestrant::InformationDictionary::builtIn() answers.

set(KESTRANT_AGGREGATE_METRICS_BASE_URL "" CACHE STRING "Base URL of the aggregate completion counter; empty: no counting")
option(KESTRANT_AGGREGATE_METRICS_PRIVACY_READY "The aggregate counter's privacy statement is published" OFF)
option(KESTRANT_AGGREGATE_METRICS_UPLOAD_ENABLED "Count completions and send the totals" OFF)
set(KESTRANT_FEEDBACK_API_BASE_URL "" CACHE STRING "Base URL of the feedback service; empty: none, and no form to write to it")
set(KESTRANT_RECAP_SHARE_BASE_URL "" CACHE STRING "Base URL of shared recaps; empty: none")

foreach(switch KESTRANT_AGGREGATE_METRICS_PRIVACY_READY KESTRANT_AGGREGATE_METRICS_UPLOAD_ENABLED)
  if(${switch})
    set(${switch}_LITERAL true)
  else()
    set(${switch}_LITERAL false)
  endif()
endforeach()
# A build without a type is one for distribution, as packagers make them.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  set(KESTRANT_IS_RELEASE_LITERAL false)
else()
  set(KESTRANT_IS_RELEASE_LITERAL true)
endif()

configure_file(${CMAKE_CURRENT_LIST_DIR}/InformationDictionaryValues.h.in
               ${CMAKE_CURRENT_BINARY_DIR}/generated/InformationDictionaryValues.h @ONLY)
