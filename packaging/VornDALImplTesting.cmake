# The kit of the installed VornDALImpl; included by its package file.

if(NOT TARGET Vorn::Assistant)
  add_library(Vorn::Assistant SHARED IMPORTED)
  set_target_properties(Vorn::Assistant PROPERTIES
    IMPORTED_LOCATION ${_vorn_libdir}/vorn-testing/libDALIMPL.so
    IMPORTED_SONAME libDALIMPL.so
    INTERFACE_INCLUDE_DIRECTORIES ${_vorn_include})
endif()

if(NOT TARGET Vorn::Testing)
  add_library(Vorn::Testing STATIC IMPORTED)
  set_target_properties(Vorn::Testing PROPERTIES
    IMPORTED_LOCATION ${_vorn_libdir}/libVornTesting.a
    INTERFACE_INCLUDE_DIRECTORIES ${_vorn_include}
    INTERFACE_LINK_LIBRARIES "Vorn::DALImpl;Vorn::Assistant"
    # Programs load the stand-in themselves, needed or not.
    INTERFACE_LINK_OPTIONS LINKER:--no-as-needed)
endif()
