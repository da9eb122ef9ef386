stratacut_bench(bench_decode SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_decode.cpp LINKS deskmedia)
stratacut_bench(bench_playback SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_playback.cpp LINKS deskservices PkgConfig::FFMPEG Qt5::Gui)
