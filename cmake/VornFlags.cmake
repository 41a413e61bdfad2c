# Vorn::Flags      what every target is compiled with: warnings and the string ABI
# Vorn::Hardening  what the library is hardened with, in every build type that optimises

option(VORN_STRICT "Treat warnings as errors" OFF)
option(VORN_ONLY_CHECKED "For builds that nobody ships: optimise no tests and no vorn-speaker, and compile several sources at once, in half the time" OFF)
option(VORN_OLD_STRING_ABI "Build everything for the older std::string, which some device toolchains keep" OFF)
include(CheckCXXCompilerFlag)

# VORN_INSTRUMENTED: what the flags put into every program, as a list of thread, address, undefined, fuzzer and coverage;
# empty in a normal build. The only place that looks at the flags: everything that an instrumented build leaves out asks it.
set(VORN_INSTRUMENTED "")
foreach(kind thread address undefined fuzzer)
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=[a-z,-]*${kind}")
    list(APPEND VORN_INSTRUMENTED ${kind})
  endif()
endforeach()
if(CMAKE_CXX_FLAGS MATCHES "-fprofile|--coverage")
  list(APPEND VORN_INSTRUMENTED coverage)
endif()
set(VORN_SANITIZED ${VORN_INSTRUMENTED})
list(REMOVE_ITEM VORN_SANITIZED coverage)
string(REGEX MATCH "-stdlib=[^ ]+" VORN_OTHER_STDLIB "${CMAKE_CXX_FLAGS}")  # packaged libraries are built with another

add_library(VornFlags INTERFACE)
add_library(Vorn::Flags ALIAS VornFlags)
target_compile_options(VornFlags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor $<$<BOOL:${VORN_STRICT}>:-Werror>
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
if(VORN_OLD_STRING_ABI)
  target_compile_definitions(VornFlags INTERFACE _GLIBCXX_USE_CXX11_ABI=0)
endif()

add_library(VornHardening INTERFACE)
add_library(Vorn::Hardening ALIAS VornHardening)
foreach(flag -fno-lto -fno-plt -fno-gnu-unique -fstack-protector-strong -fstack-clash-protection)
  string(MAKE_C_IDENTIFIER "VORN_HAS${flag}" has)
  check_cxx_compiler_flag(${flag} ${has})
  if(${has})
    target_compile_options(VornHardening INTERFACE ${flag})
  endif()
endforeach()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  target_compile_options(VornHardening INTERFACE -fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
  # Return addresses only: branch targets need start-up objects that carry the note too, and distributions lack them.
  target_compile_options(VornHardening INTERFACE -mbranch-protection=pac-ret)
endif()
target_compile_definitions(VornHardening INTERFACE _GLIBCXX_ASSERTIONS)
if(NOT VORN_SANITIZED)
  set(optimised "$<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:MinSizeRel>>")
  target_compile_options(VornHardening INTERFACE
    $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>)
endif()
target_link_options(VornHardening INTERFACE
  LINKER:-z,relro,-z,now,-z,noexecstack LINKER:--as-needed LINKER:--build-id=sha1)

# vorn_compile_folders(TARGET): where it is only checked, the sources of a folder are compiled as one.
function(vorn_compile_folders target)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  foreach(source ${sources})
    get_filename_component(folder ${source} DIRECTORY)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP "in/${folder}")
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${VORN_ONLY_CHECKED} UNITY_BUILD_MODE GROUP)
endfunction()
