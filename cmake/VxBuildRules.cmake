# How this project compiles its own sources. Users of the installed library inherit none of it.
include(CheckCXXCompilerFlag)

add_library(vx_build_rules INTERFACE)
target_compile_features(vx_build_rules INTERFACE cxx_std_20 c_std_11)
target_compile_options(vx_build_rules INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Werror
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)

# Unique symbols would keep the library loaded after dlclose.
check_cxx_compiler_flag(-fno-gnu-unique VX_HAS_NO_GNU_UNIQUE)
if(VX_HAS_NO_GNU_UNIQUE)
    target_compile_options(vx_build_rules INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

if(VX_SANITIZE)
    target_compile_options(vx_build_rules INTERFACE
        -fsanitize=${VX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vx_build_rules INTERFACE -fsanitize=${VX_SANITIZE})
endif()

if(NOT VX_VECTOR)
    target_compile_definitions(vx_build_rules INTERFACE VX_NO_VECTOR)
elseif(VX_VECTOR EQUAL 128)
    target_compile_definitions(vx_build_rules INTERFACE VX_NO_AVX512)
endif()

if(VX_FUZZ) # the fuzzer is to see what the library does
    target_compile_options(vx_build_rules INTERFACE -fsanitize=fuzzer-no-link)
endif()

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
