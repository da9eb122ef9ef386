stratacut_bench(bench_manager SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_manager.cpp
                LINKS StratacutUI ViewDeckQt Qt5::Widgets)
