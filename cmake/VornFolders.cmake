# The folders below the prefix that things are installed into, by the names of GNUInstallDirs.

# The library is where devices look for it, unless told otherwise; the package files then where every CMake and pkg-config look.
string(COMPARE EQUAL "${CMAKE_INSTALL_LIBDIR}" "" for_devices)
if(for_devices)
  set(CMAKE_INSTALL_LIBDIR lib64)
endif()
include(GNUInstallDirs)
set(libdir ${CMAKE_INSTALL_LIBDIR})
set(packagedir ${libdir})
if(for_devices)
  string(REGEX REPLACE "64$" "" packagedir ${libdir})
endif()
set(includedir ${CMAKE_INSTALL_INCLUDEDIR}/vorn-dal)
set(datadir ${CMAKE_INSTALL_DATADIR}/vorn-dal)
set(standindir ${libdir}/vorn-testing)  # not on the library's runtime path: must never shadow a product's

# From one installed folder to another, so that the tree can be moved.
function(vorn_way variable from to)
  file(RELATIVE_PATH way ${CMAKE_INSTALL_PREFIX}/${from} ${CMAKE_INSTALL_PREFIX}/${to})
  string(REGEX REPLACE "/$" "" way "${way}")
  set(${variable} ${way} PARENT_SCOPE)
endfunction()
foreach(folder libdir packagedir includedir datadir CMAKE_INSTALL_BINDIR)
  if(PROJECT_IS_TOP_LEVEL AND IS_ABSOLUTE "${${folder}}")
    message(FATAL_ERROR "CMAKE_INSTALL_...DIR=${${folder}}: name it relative to the prefix, so that the tree can be moved.")
  endif()
endforeach()
