# Finds libedit's readline-compatible interface; gives the target LibEdit::LibEdit. The second name of its header is that
# of FreeBSD's base system.
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
