stratacut_bench(bench_speech SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_speech.cpp LINKS deskspeech)
target_include_directories(bench_speech PRIVATE "${CMAKE_SOURCE_DIR}/tests")
