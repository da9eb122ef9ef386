stratacut_bench(bench_decode SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_decode.cpp LINKS deskmedia)
