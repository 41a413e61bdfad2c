# Vorn::Assistant  libDALIMPL.so and the declarations to compile against: the stand-in that this project
# builds, or, when VORN_ASSISTANT_DIR names a folder, a product's own.

set(VORN_ASSISTANT_INCLUDE_DIR ${PROJECT_SOURCE_DIR}/include)
if(NOT VORN_ASSISTANT_DIR)
  add_subdirectory(${PROJECT_SOURCE_DIR}/testing/assistant)
  return()
endif()

find_library(VORN_ASSISTANT_LIBRARY libDALIMPL.so PATHS ${VORN_ASSISTANT_DIR} PATH_SUFFIXES lib64 lib .
             NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
if(NOT VORN_ASSISTANT_LIBRARY OR NOT EXISTS ${VORN_ASSISTANT_DIR}/include/DeviceAbstractionLayer)
  message(FATAL_ERROR
    "VORN_ASSISTANT_DIR=${VORN_ASSISTANT_DIR} must hold include/DeviceAbstractionLayer/ and lib/libDALIMPL.so "
    "(or lib64/); leave it empty to build against the stand-in.")
endif()
if(VORN_BUILD_TESTS OR VORN_BUILD_SPEAKER OR VORN_BUILD_BENCH)
  message(FATAL_ERROR "Tests, speaker and benchmarks need the stand-in: leave VORN_ASSISTANT_DIR empty for them.")
endif()
set(VORN_BUILD_KIT OFF)

# By name, not by path: the needed entry must read libDALIMPL.so even when the product's file has no soname.
add_library(VornAssistant INTERFACE)
get_filename_component(VORN_ASSISTANT_LIBRARY_DIR ${VORN_ASSISTANT_LIBRARY} DIRECTORY)
target_link_directories(VornAssistant INTERFACE ${VORN_ASSISTANT_LIBRARY_DIR})
target_link_libraries(VornAssistant INTERFACE -l:libDALIMPL.so)
set(VORN_ASSISTANT_INCLUDE_DIR ${VORN_ASSISTANT_DIR}/include)
add_library(Vorn::Assistant ALIAS VornAssistant)
