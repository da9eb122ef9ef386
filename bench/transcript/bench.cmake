# They ask the same host as the tests.
foreach(name IN ITEMS bench_transcript bench_search)
  stratacut_bench(${name} SOURCES ${CMAKE_CURRENT_LIST_DIR}/${name}.cpp
                  ${CMAKE_SOURCE_DIR}/tests/support/RecordingTranscriptInfo.cpp
                  LINKS StratacutUI ViewDeckQt NvCoreM2W10 Qt5::Widgets)
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
endforeach()
