# Vorn::Assistant  libDALIMPL.so and the declarations to compile against: the stand-in that this project
# builds, or, when VORN_ASSISTANT_DIR names a folder, a product's own.

set(VORN_ASSISTANT_DIR "" CACHE PATH
    "A product's own assistant side: a folder with include/DeviceAbstractionLayer/ and lib/libDALIMPL.so; empty builds the stand-in")

if(NOT VORN_ASSISTANT_DIR)
  message(STATUS "Assistant side: the stand-in, no product's")
  set(VORN_INCLUDE_DIRS ${PROJECT_SOURCE_DIR}/include)
  add_subdirectory(${PROJECT_SOURCE_DIR}/testing/assistant)
  return()
endif()
if(VORN_BUILD_TESTS OR VORN_BUILD_SPEAKER OR VORN_BUILD_BENCH)
  message(FATAL_ERROR "Tests, speaker and benchmarks need the stand-in: leave VORN_ASSISTANT_DIR empty for them.")
endif()
set(VORN_BUILD_KIT OFF)
get_filename_component(VORN_ASSISTANT_DIR ${VORN_ASSISTANT_DIR} ABSOLUTE)  # without a slash at its end
include(VornAssistantCheck)
vorn_check_assistant()
message(STATUS "Assistant side: ${VORN_ASSISTANT_DIR}")

# By name where the product's file has no soname: the needed entry must read libDALIMPL.so all the same.
add_library(VornAssistant INTERFACE)
if(VORN_ASSISTANT_SONAME)
  target_link_libraries(VornAssistant INTERFACE ${VORN_ASSISTANT_LIBRARY})
else()
  get_filename_component(directory ${VORN_ASSISTANT_LIBRARY} DIRECTORY)
  target_link_directories(VornAssistant INTERFACE ${directory})
  target_link_libraries(VornAssistant INTERFACE -l:libDALIMPL.so)
endif()
target_include_directories(VornAssistant SYSTEM INTERFACE ${VORN_ASSISTANT_DIR}/include)
add_library(Vorn::Assistant ALIAS VornAssistant)
