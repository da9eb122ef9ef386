stratacut_bench(bench_export SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_export.cpp LINKS deskservices)
stratacut_bench(bench_sound SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_sound.cpp LINKS deskservices)
