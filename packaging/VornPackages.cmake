# Debian packages, one per component: cpack -G DEB in the build folder, or scripts/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vorn-dal)
set(CPACK_PACKAGE_VENDOR "VornDALImpl")
set(CPACK_PACKAGE_CONTACT "VornDALImpl maintainers <maintainers@vorn.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "device abstraction layer implementation of a networked speaker")
set(CPACK_PACKAGING_INSTALL_PREFIX /opt/Vorn)
set(CPACK_STRIP_FILES OFF)  # the symbols serve field reports
set(CPACK_COMPONENTS_ALL runtime dev)
if(TARGET VornTesting)  # a build against a product's assistant side has neither
  list(APPEND CPACK_COMPONENTS_ALL testing tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE OFF)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "riscv64")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE riscv64)
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvorndalimpl)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvorndalimpl-dev)
set(CPACK_DEBIAN_TESTING_PACKAGE_NAME libvorndalimpl-testing)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vorn-dal-tools)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TESTING_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(same "(= ${PROJECT_VERSION}-1)")

set(system "libc6, libgcc-s1, libstdc++6")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${system}")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libvorndalimpl ${same}")
set(CPACK_DEBIAN_TESTING_PACKAGE_DEPENDS "libvorndalimpl-dev ${same}, ${system}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libvorndalimpl ${same}, libvorndalimpl-testing ${same}, ${system}, binutils, python3:any, \
libasound2, libedit2, libmicrohttpd12, libsamplerate0, libsndfile1, libsqlite3-0")

set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "libVornDALImpl.so connects a voice-assistant client with the firmware.
It needs libDALIMPL.so, which the product provides.")
set(CPACK_DEBIAN_DEV_DESCRIPTION "Headers: the host interface to implement, and the adapters.
With a CMake package and a pkg-config file.")
set(CPACK_DEBIAN_TESTING_DESCRIPTION "The test kit: doubles of both sides, examples, and a stand-in libDALIMPL.so
outside the runtime path.")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "Tools: a simulated speaker, a checker for host implementations and one for
binary compatibility.")

# What a package needs outside the prefix. Only when packages are made: a plain install stays below its prefix.
option(VORN_PACKAGING "Add what Debian packages hold outside the prefix" OFF)
if(VORN_PACKAGING)
  set(CPACK_SET_DESTDIR ON)
  foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} component)
    set(package ${CPACK_DEBIAN_${component}_PACKAGE_NAME})
    string(TOLOWER ${component} component)
    install(FILES packaging/copyright DESTINATION /usr/share/doc/${package} COMPONENT ${component})
    install(FILES packaging/lintian/${package} DESTINATION /usr/share/lintian/overrides COMPONENT ${component})
    execute_process(
      COMMAND sh -c "sed 's/@PACKAGE@/${package}/' packaging/changelog | gzip -9n > ${PROJECT_BINARY_DIR}/${package}.changelog.gz"
      WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} RESULT_VARIABLE failed)
    if(failed)
      message(FATAL_ERROR "packaging/changelog cannot be packed: ${failed}")
    endif()
    install(FILES ${PROJECT_BINARY_DIR}/${package}.changelog.gz DESTINATION /usr/share/doc/${package}
            RENAME changelog.Debian.gz COMPONENT ${component})
  endforeach()
endif()

include(CPack)
