stratacut_bench(bench_model SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_model.cpp LINKS StratacutUI Qt5::Widgets)
