stratacut_bench(bench_audio_mapping
                SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_audio_mapping.cpp
                        ${CMAKE_SOURCE_DIR}/src/audio/IMF_TrackGroupingManager.cpp
                LINKS StratacutUI ViewDeckQt Qt5::Widgets)
target_include_directories(bench_audio_mapping PRIVATE ${CMAKE_SOURCE_DIR}/src)
