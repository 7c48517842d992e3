# Tallyfoot::Foundation: what Objective-C sources compile and link with. Apple's Foundation, elsewhere
# GNUstep's on GCC's runtime. For the project's own build and for hosts of the installed package alike.
#
# Sets TallyfootFoundation_FOUND, else TallyfootFoundation_MISSING to a list of what is not there.

set(TallyfootFoundation_FOUND FALSE)
set(TallyfootFoundation_MISSING "")

if(APPLE)
  if(NOT TARGET Tallyfoot::Foundation)
    add_library(Tallyfoot::Foundation INTERFACE IMPORTED GLOBAL)
    target_link_libraries(Tallyfoot::Foundation INTERFACE "-framework Foundation")
  endif()
  set(TallyfootFoundation_FOUND TRUE)
  return()
endif()

# GCC keeps the runtime's headers and library among its own files; clang knows where.
find_program(TALLYFOOT_OBJC_COMPILER NAMES clang++ clang++-19 clang++-18 clang++-17 clang++-16 clang++-15 clang++-14
  DOC "The compiler for Objective-C++ sources")
set(tallyfoot_objc_header "")
if(TALLYFOOT_OBJC_COMPILER)
  execute_process(COMMAND "${TALLYFOOT_OBJC_COMPILER}" -print-file-name=include/objc/objc.h
    OUTPUT_VARIABLE tallyfoot_objc_header OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
else()
  list(APPEND TallyfootFoundation_MISSING "clang")
endif()
if(EXISTS "${tallyfoot_objc_header}")
  cmake_path(GET tallyfoot_objc_header PARENT_PATH tallyfoot_objc_headers)
  cmake_path(GET tallyfoot_objc_headers PARENT_PATH tallyfoot_objc_headers)
  cmake_path(NORMAL_PATH tallyfoot_objc_headers)
elseif(TALLYFOOT_OBJC_COMPILER)
  list(APPEND TallyfootFoundation_MISSING "GCC's Objective-C runtime (libobjc-12-dev)")
endif()

find_path(TALLYFOOT_GNUSTEP_HEADERS Foundation/Foundation.h PATH_SUFFIXES GNUstep)
find_library(TALLYFOOT_GNUSTEP_LIBRARY gnustep-base)
if(NOT TALLYFOOT_GNUSTEP_HEADERS OR NOT TALLYFOOT_GNUSTEP_LIBRARY)
  list(APPEND TallyfootFoundation_MISSING "GNUstep's Foundation (libgnustep-base-dev)")
endif()
find_path(TALLYFOOT_BLOCK_HEADER Block.h)
find_library(TALLYFOOT_BLOCKS_LIBRARY BlocksRuntime)
if(NOT TALLYFOOT_BLOCK_HEADER OR NOT TALLYFOOT_BLOCKS_LIBRARY)
  list(APPEND TallyfootFoundation_MISSING "the blocks runtime (libblocksruntime-dev)")
endif()
# A language that is on already has its compiler, and only clang knows these options.
foreach(language OBJC OBJCXX)
  if(CMAKE_${language}_COMPILER_ID AND NOT CMAKE_${language}_COMPILER_ID MATCHES "Clang")
    list(APPEND TallyfootFoundation_MISSING "clang as CMAKE_${language}_COMPILER, not ${CMAKE_${language}_COMPILER}")
  endif()
endforeach()
mark_as_advanced(TALLYFOOT_OBJC_COMPILER TALLYFOOT_GNUSTEP_HEADERS TALLYFOOT_GNUSTEP_LIBRARY
  TALLYFOOT_BLOCK_HEADER TALLYFOOT_BLOCKS_LIBRARY)
if(TallyfootFoundation_MISSING)
  return()
endif()

set(TallyfootFoundation_FOUND TRUE)

# Outside Apple's systems CMake does not know how a program in Objective-C finds its shared libraries.
foreach(language OBJC OBJCXX)
  foreach(kind SHARED_LIBRARY EXECUTABLE)
    foreach(flag FLAG FLAG_SEP)
      if(NOT CMAKE_${kind}_RUNTIME_${language}_${flag})
        set(CMAKE_${kind}_RUNTIME_${language}_${flag} "${CMAKE_SHARED_LIBRARY_RUNTIME_C_${flag}}")
      endif()
    endforeach()
    if(NOT CMAKE_${kind}_RPATH_LINK_${language}_FLAG)
      set(CMAKE_${kind}_RPATH_LINK_${language}_FLAG "${CMAKE_SHARED_LIBRARY_RPATH_LINK_C_FLAG}")
    endif()
  endforeach()
  if(NOT CMAKE_SHARED_LIBRARY_SONAME_${language}_FLAG)
    set(CMAKE_SHARED_LIBRARY_SONAME_${language}_FLAG "${CMAKE_SHARED_LIBRARY_SONAME_C_FLAG}")
  endif()
endforeach()

if(NOT TARGET Tallyfoot::Foundation)
  add_library(Tallyfoot::Foundation INTERFACE IMPORTED GLOBAL)
  # Only for compilers that know them: a host's plain C++ may come from another one.
  set(language "$<OR:$<COMPILE_LANGUAGE:OBJC,OBJCXX>,$<COMPILE_LANG_AND_ID:C,Clang>,$<COMPILE_LANG_AND_ID:CXX,Clang>>")
  target_compile_options(Tallyfoot::Foundation INTERFACE
    "$<${language}:SHELL:-fobjc-runtime=gcc -fblocks -fexceptions -fconstant-string-class=NSConstantString>"
    # Behind all others, so that the compiler's own headers stay in front of GCC's, and a host's in front of ours.
    "$<${language}:SHELL:-idirafter \"${TALLYFOOT_GNUSTEP_HEADERS}\">"
    "$<${language}:SHELL:-idirafter \"${CMAKE_CURRENT_LIST_DIR}/GNUstep\">"
    "$<${language}:SHELL:-idirafter \"${tallyfoot_objc_headers}\">")
  target_compile_definitions(Tallyfoot::Foundation INTERFACE "$<${language}:_NATIVE_OBJC_EXCEPTIONS>")
  target_link_libraries(Tallyfoot::Foundation INTERFACE
    "${TALLYFOOT_BLOCKS_LIBRARY}" "${TALLYFOOT_GNUSTEP_LIBRARY}" -lobjc)
endif()
