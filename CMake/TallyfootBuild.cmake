# How every target of the project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

find_program(TALLYFOOT_CCACHE ccache)
if(TALLYFOOT_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER AND PROJECT_IS_TOP_LEVEL)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${TALLYFOOT_CCACHE}")
endif()

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(CURL REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(nlohmann_json REQUIRED)
pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET GLOBAL libzip)

if(TALLYFOOT_SANITIZE)
  add_compile_options(-fsanitize=${TALLYFOOT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # A method is called by what its selector promises; what a body was declared to be does not matter there.
  add_compile_options($<$<COMPILE_LANGUAGE:OBJCXX>:-fno-sanitize=function>)
  add_link_options(-fsanitize=${TALLYFOOT_SANITIZE})
endif()

# Warnings for our own code; never for a header that somebody else wrote.
function(tallyfoot_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  target_compile_options(${target} PRIVATE
    $<$<OR:$<COMPILE_LANG_AND_ID:CXX,Clang,AppleClang>,$<COMPILE_LANGUAGE:OBJCXX>>:-Wthread-safety>)
  if(TALLYFOOT_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# Several sources as one: what they include together takes most of the time.
function(tallyfoot_join target)
  if(TALLYFOOT_QUICK_BUILD)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 10)
    # g++ takes a joined source for a header, from which a nameless namespace would be another in each.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
endfunction()

# clang only: g++ takes longer to load these headers than to read them.
function(tallyfoot_precompile target)
  if(TALLYFOOT_QUICK_BUILD AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_precompile_headers(${target} ${ARGN})
  endif()
endfunction()

# The same for Objective-C++. Foundation first: clang's own idea of a protocol would stand in its way.
function(tallyfoot_precompile_objc name)
  if(TALLYFOOT_QUICK_BUILD AND ARGV1 STREQUAL "REUSE_FROM")
    target_precompile_headers(${name} REUSE_FROM ${ARGV2})
  elseif(TALLYFOOT_QUICK_BUILD)
    list(TRANSFORM ARGN REPLACE "(.+)" "<\\1$<ANGLE-R>" OUTPUT_VARIABLE headers)
    target_precompile_headers(${name} PRIVATE "$<$<COMPILE_LANGUAGE:OBJCXX>:${headers}>")
  endif()
endfunction()
