# Settings of the service for distributors; by default, reserved example names.
set(JOIN_WEB_SERVER_HOST "join.example.com" CACHE STRING "Default web server host")
set(JOIN_SYSTEM_REQUIREMENTS_URL "https://www.example.com/system-requirements" CACHE STRING
    "Web page with the system requirements")

option(JOIN_TOOLS "Build the service and the stand-ins that the tests and the demonstration use" ${BUILD_TESTING})

set(JOIN_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
if(JOIN_SANITIZE)
    add_compile_options(-fsanitize=${JOIN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${JOIN_SANITIZE})
endif()

option(JOIN_FUZZ "Build the programs in fuzz/, which need Clang, and everything for them" OFF)
if(JOIN_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

option(JOIN_COVERAGE "Count the lines that run, as GCC does" OFF)
if(JOIN_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
    add_library(join_counts_at_end STATIC ${PROJECT_SOURCE_DIR}/tools/coverage/CountsAtEnd.cpp)
    target_link_options(join_counts_at_end INTERFACE
        -Wl,--undefined=joinCountsAtEnd,--wrap=_exit,--wrap=_Exit,--wrap=execve)
    link_libraries(join_counts_at_end)
endif()

# Programs that are to be shipped are hardened as Debian's are, and check their containers; src/CMakeLists.txt applies
# this. Each object is bound as a whole when it is loaded, which costs the start nothing that can be measured.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(join_hardening -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -D_GLIBCXX_ASSERTIONS)
foreach(protection IN ITEMS stack-protector-strong stack-clash-protection cf-protection) # not all on every processor
    check_cxx_compiler_flag(-f${protection} JOIN_HAS_${protection})
    if(JOIN_HAS_${protection})
        list(APPEND join_hardening -f${protection})
    endif()
endforeach()
set(join_hardening "$<$<CONFIG:Release,RelWithDebInfo>:${join_hardening}>")
set(join_link_hardening -Wl,-z,relro -Wl,-z,now)

# For the project's own code.
add_library(join_warnings INTERFACE)
target_compile_options(join_warnings INTERFACE -Wall -Wextra -Wpedantic -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # False alarms of GCC 12: unused alternatives of a moved std::variant as uninitialised members, and the buffers of
    # concatenated texts as overlapping.
    target_compile_options(join_warnings INTERFACE -Wno-maybe-uninitialized -Wno-restrict)
endif()
target_include_directories(join_warnings INTERFACE ${PROJECT_SOURCE_DIR}/src)
