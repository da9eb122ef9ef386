stratacut_test(tst_j2k SOURCES tst_j2k.cpp LINKS imf_testsupport)
