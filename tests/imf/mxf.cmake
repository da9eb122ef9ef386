foreach(name IN ITEMS tst_mxf_tracks tst_mxf_damage tst_mxf_strangers)
  stratacut_test(${name} SOURCES ${name}.cpp LINKS imf_testsupport)
endforeach()
