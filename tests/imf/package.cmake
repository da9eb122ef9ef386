add_library(imf_packagesupport STATIC package/Deliveries.cpp package/Deliveries.h)
target_link_libraries(imf_packagesupport PUBLIC imf_testsupport)

stratacut_test(tst_imf_package SOURCES package/tst_imf_package.cpp LINKS imf_packagesupport)
stratacut_test(tst_imf_verify SOURCES package/tst_imf_verify.cpp LINKS imf_packagesupport LABELS soak)

# Exports its stand-ins for calls of the system, so that those of the libraries come to them too.
add_executable(imf_committer package/committer.cpp)
target_link_libraries(imf_committer PRIVATE imf_packagesupport)
set_target_properties(imf_committer PROPERTIES ENABLE_EXPORTS ON)
stratacut_test(tst_imf_crash SOURCES package/tst_imf_crash.cpp LINKS imf_packagesupport)
target_compile_definitions(tst_imf_crash PRIVATE COMMITTER="$<TARGET_FILE:imf_committer>")
add_dependencies(tst_imf_crash imf_committer)
