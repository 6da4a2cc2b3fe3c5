# Finds the readline-compatible interface of libedit and defines the target LibEdit::LibEdit. FreeBSD's base system uses
# the second name of the header.
find_path(LibEdit_INCLUDE_DIR NAMES editline/readline.h edit/readline/readline.h)
find_library(LibEdit_LIBRARY edit)
mark_as_advanced(LibEdit_INCLUDE_DIR LibEdit_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LibEdit REQUIRED_VARS LibEdit_LIBRARY LibEdit_INCLUDE_DIR)

if(LibEdit_FOUND AND NOT TARGET LibEdit::LibEdit)
  add_library(LibEdit::LibEdit UNKNOWN IMPORTED)
  set_target_properties(LibEdit::LibEdit PROPERTIES
    IMPORTED_LOCATION ${LibEdit_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${LibEdit_INCLUDE_DIR})
endif()
