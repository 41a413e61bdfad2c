# cmake --install, in components:
#
#   runtime  the library                                   dev    headers, CMake package, pkg-config file
#   testing  the kit and the stand-in assistant side       tools  vorn-speaker, vorn-log, abi-check
#
# The default prefix, /opt/Vorn, is where devices keep it. Nothing installed names the prefix: the tree can be moved.

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

install(TARGETS VornDALImpl LIBRARY DESTINATION ${libdir} COMPONENT runtime)

set(own)
if(VORN_ASSISTANT_DIR)
  set(own PATTERN DeviceAbstractionLayer EXCLUDE)  # the product brings its own
endif()
install(DIRECTORY include/ DESTINATION ${includedir} COMPONENT dev FILES_MATCHING PATTERN "*.h" ${own})
include(CMakePackageConfigHelpers)
write_basic_package_version_file(VornDALImplConfigVersion.cmake COMPATIBILITY SameMajorVersion)
if(VORN_OLD_STRING_ABI)
  set(VORN_STRING_ABI_DEFINITION _GLIBCXX_USE_CXX11_ABI=0)
  set(VORN_STRING_ABI_FLAG -D${VORN_STRING_ABI_DEFINITION})
else()
  set(VORN_STRING_ABI_DEFINITION)
  set(VORN_STRING_ABI_FLAG)
endif()
if(VORN_ASSISTANT_DIR)
  set(VORN_OF_PRODUCT TRUE)
  set(VORN_ASSISTANT_PREFIX "# Where the product keeps include/DeviceAbstractionLayer: pkg-config --define-variable=assistant=DIR\nassistant=\${prefix}\n")
  set(VORN_ASSISTANT_FLAG "-I\${assistant}/include")
else()
  set(VORN_OF_PRODUCT FALSE)
endif()
vorn_way(VORN_PREFIX_OF_PACKAGE ${packagedir}/cmake/VornDALImpl .)
vorn_way(VORN_PREFIX_OF_PC ${packagedir}/pkgconfig .)
configure_file(packaging/VornDALImplConfig.cmake.in VornDALImplConfig.cmake @ONLY)
configure_file(packaging/VornDALImpl.pc.in VornDALImpl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/VornDALImplConfig.cmake ${PROJECT_BINARY_DIR}/VornDALImplConfigVersion.cmake
        DESTINATION ${packagedir}/cmake/VornDALImpl COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/VornDALImpl.pc DESTINATION ${packagedir}/pkgconfig COMPONENT dev)

# A software bill of materials of what was really built: made with the library, named after it.
file(WRITE ${PROJECT_BINARY_DIR}/bill-of-materials.cmake
  "set(PRODUCT \"${VORN_ASSISTANT_DIR}\")\nset(PRODUCT_HEADERS \"${VORN_ASSISTANT_HEADERS}\")\nset(PRODUCT_LIBRARY \"${VORN_ASSISTANT_LIBRARY}\")\n")
add_custom_command(TARGET VornDALImpl POST_BUILD BYPRODUCTS VornDALImpl.spdx.json
  COMMAND ${CMAKE_COMMAND} -DLIBRARY=$<TARGET_FILE:VornDALImpl> -DVERSION=${PROJECT_VERSION} -DSOURCE=${PROJECT_SOURCE_DIR}
          -DPROCESSOR=${CMAKE_SYSTEM_PROCESSOR} -DCOMPILER=${CMAKE_CXX_COMPILER_ID}-${CMAKE_CXX_COMPILER_VERSION}
          -DBUILT_WITH=bill-of-materials.cmake -DOUTPUT=VornDALImpl.spdx.json -P ${PROJECT_SOURCE_DIR}/packaging/sbom.cmake
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR} VERBATIM)
install(FILES ${PROJECT_BINARY_DIR}/VornDALImpl.spdx.json DESTINATION ${datadir} COMPONENT dev)

if(TARGET VornTesting)
  install(TARGETS VornTesting ARCHIVE DESTINATION ${libdir} COMPONENT testing)
  install(TARGETS VornAssistant LIBRARY DESTINATION ${standindir} COMPONENT testing)
  install(DIRECTORY testing/include/ DESTINATION ${includedir} COMPONENT testing FILES_MATCHING PATTERN "*.h")
  install(FILES packaging/VornDALImplTesting.cmake DESTINATION ${packagedir}/cmake/VornDALImpl COMPONENT testing)
  configure_file(packaging/VornDALImplTesting.pc.in VornDALImplTesting.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/VornDALImplTesting.pc DESTINATION ${packagedir}/pkgconfig COMPONENT testing)
  install(DIRECTORY examples/ DESTINATION ${datadir}/examples COMPONENT testing)
endif()

install(PROGRAMS tools/abi-check DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
# Every program has a manual page.
set(pages tools/abi-check.1)
foreach(page simulator/vorn-speaker.1 tools/log/vorn-log.1 tools/conformance/vorn-conformance.1 tools/capture/vorn-capture.1)
  get_filename_component(tool ${page} NAME_WE)
  if(TARGET ${tool})
    list(APPEND pages ${page})
  endif()
endforeach()
install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
vorn_way(standin_of_bin ${CMAKE_INSTALL_BINDIR} ${standindir})
vorn_way(lib_of_bin ${CMAKE_INSTALL_BINDIR} ${libdir})
foreach(tool vorn-speaker vorn-log vorn-conformance)
  if(TARGET ${tool})
    set_target_properties(${tool} PROPERTIES INSTALL_RPATH "$ORIGIN/${standin_of_bin}:$ORIGIN/${lib_of_bin}")
    install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  endif()
endforeach()

if(TARGET vorn-capture)
  set_target_properties(vorn-capture PROPERTIES VORN_WAY ${lib_of_bin}/vorn-capture)
  install(TARGETS vorn-capture RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(TARGETS VornCapture VornCaptureOld LIBRARY DESTINATION ${libdir}/vorn-capture COMPONENT tools)
endif()

include(packaging/VornPackages.cmake)
