# cmake --install, in components:
#
#   runtime  the library                                   dev    headers, CMake package, pkg-config file
#   testing  the kit and the stand-in assistant side       tools  vorn-speaker, vorn-log, abi-check
#
# The default prefix is where devices keep it. Nothing installed names the prefix: the tree can be moved.

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
if(CMAKE_INSTALL_PREFIX_INITIALIZED_TO_DEFAULT)
  set(CMAKE_INSTALL_PREFIX /opt/Vorn CACHE PATH "Where cmake --install puts things" FORCE)
endif()

set(libdir lib64)
set(standindir ${libdir}/vorn-testing)  # not on the library's runtime path: must never shadow a product's

install(TARGETS VornDALImpl LIBRARY DESTINATION ${libdir} COMPONENT runtime)

set(own)
if(VORN_ASSISTANT_DIR)
  set(own PATTERN DeviceAbstractionLayer EXCLUDE)  # the product brings its own
endif()
install(DIRECTORY include/ DESTINATION include/vorn-dal COMPONENT dev FILES_MATCHING PATTERN "*.h" ${own})
include(CMakePackageConfigHelpers)
write_basic_package_version_file(VornDALImplConfigVersion.cmake COMPATIBILITY SameMajorVersion)
if(VORN_OLD_STRING_ABI)
  set(VORN_STRING_ABI_DEFINITION _GLIBCXX_USE_CXX11_ABI=0)
  set(VORN_STRING_ABI_FLAG -D${VORN_STRING_ABI_DEFINITION})
else()
  set(VORN_STRING_ABI_DEFINITION)
  set(VORN_STRING_ABI_FLAG)
endif()
configure_file(packaging/VornDALImplConfig.cmake.in VornDALImplConfig.cmake @ONLY)
configure_file(packaging/VornDALImpl.pc.in VornDALImpl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/VornDALImplConfig.cmake ${PROJECT_BINARY_DIR}/VornDALImplConfigVersion.cmake
        DESTINATION lib/cmake/VornDALImpl COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/VornDALImpl.pc DESTINATION lib/pkgconfig COMPONENT dev)

# A software bill of materials of what was really built: made with the library, named after it.
add_custom_command(OUTPUT VornDALImpl.spdx.json
  COMMAND ${CMAKE_COMMAND} -DLIBRARY=$<TARGET_FILE:VornDALImpl> -DVERSION=${PROJECT_VERSION} -DSOURCE=${PROJECT_SOURCE_DIR}
          -DPROCESSOR=${CMAKE_SYSTEM_PROCESSOR} -DCOMPILER=${CMAKE_CXX_COMPILER_ID}-${CMAKE_CXX_COMPILER_VERSION}
          -DOUTPUT=VornDALImpl.spdx.json -P ${PROJECT_SOURCE_DIR}/packaging/sbom.cmake
  DEPENDS VornDALImpl ${PROJECT_SOURCE_DIR}/packaging/sbom.cmake VERBATIM)
add_custom_target(VornSbom ALL DEPENDS VornDALImpl.spdx.json)
install(FILES ${PROJECT_BINARY_DIR}/VornDALImpl.spdx.json DESTINATION share/vorn-dal COMPONENT dev)

if(TARGET VornTesting)
  install(TARGETS VornTesting ARCHIVE DESTINATION ${libdir} COMPONENT testing)
  install(TARGETS VornAssistant LIBRARY DESTINATION ${standindir} COMPONENT testing)
  install(DIRECTORY testing/include/ DESTINATION include/vorn-dal COMPONENT testing FILES_MATCHING PATTERN "*.h")
  install(FILES packaging/VornDALImplTesting.cmake DESTINATION lib/cmake/VornDALImpl COMPONENT testing)
  install(DIRECTORY examples/ DESTINATION share/vorn-dal/examples COMPONENT testing)
endif()

install(PROGRAMS tools/abi-check DESTINATION bin COMPONENT tools)
if(TARGET vorn-speaker)
  set_target_properties(vorn-speaker PROPERTIES INSTALL_RPATH "$ORIGIN/../${standindir}:$ORIGIN/../${libdir}")
  install(TARGETS vorn-speaker RUNTIME DESTINATION bin COMPONENT tools)
endif()
if(TARGET vorn-log)
  install(TARGETS vorn-log RUNTIME DESTINATION bin COMPONENT tools)
endif()
if(TARGET vorn-conformance)
  set_target_properties(vorn-conformance PROPERTIES INSTALL_RPATH "$ORIGIN/../${standindir}:$ORIGIN/../${libdir}")
  install(TARGETS vorn-conformance RUNTIME DESTINATION bin COMPONENT tools)
endif()

include(packaging/VornPackages.cmake)
