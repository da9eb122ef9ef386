stratacut_test(tst_imf_documents SOURCES xml/tst_imf_documents.cpp LINKS deskimf)
