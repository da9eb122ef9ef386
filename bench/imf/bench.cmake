foreach(name IN ITEMS bench_j2k_pool bench_wrapping)
  stratacut_bench(${name} SOURCES ${CMAKE_CURRENT_LIST_DIR}/${name}.cpp LINKS deskimf)
endforeach()
