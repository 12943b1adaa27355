# The imported target GMP::GMP, for C and the headers of the C++ class. Hosts use this file too: the
# static libraries need GMP when a host links them.
find_path(GMP_INCLUDE_DIR gmpxx.h)
find_library(GMP_LIBRARY gmp)
mark_as_advanced(GMP_INCLUDE_DIR GMP_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(GMP REQUIRED_VARS GMP_LIBRARY GMP_INCLUDE_DIR)

if(GMP_FOUND AND NOT TARGET GMP::GMP)
  add_library(GMP::GMP UNKNOWN IMPORTED)
  set_target_properties(GMP::GMP PROPERTIES
    IMPORTED_LOCATION ${GMP_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${GMP_INCLUDE_DIR})
endif()
