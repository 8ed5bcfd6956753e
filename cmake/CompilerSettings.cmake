# Language level, warnings and link settings that all targets share.
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(gzd_settings INTERFACE)
# One rounding per operation everywhere: fused operations only where the code asks for them.
target_compile_options(gzd_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -ffp-contract=off)
# GCC 12 sees overlapping copies in joined strings where there are none.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(gzd_settings INTERFACE -Wno-restrict)
endif()
target_compile_definitions(gzd_settings INTERFACE _FILE_OFFSET_BITS=64)

# Programs that can be loaded anywhere, tables that are read-only once loaded, and checks of stack
# and buffers: what is left of a fault is an end with a message.
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)
target_compile_options(gzd_settings INTERFACE -fstack-protector-strong)
target_compile_options(gzd_settings INTERFACE
  "$<$<CONFIG:Release>:-U_FORTIFY_SOURCE>" "$<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>")
add_link_options("LINKER:-z,relro,-z,now,-z,noexecstack")

# gzd_program: for the programs that convert. The C++ runtime is linked in where there is a static one:
# loading the shared one takes longer than to convert a second of recording. Not under sanitizers.
include(CheckLinkerFlag)
add_library(gzd_program INTERFACE)
check_linker_flag(CXX "-static-libstdc++;-static-libgcc" GZD_HAS_STATIC_RUNTIME)
if(GZD_HAS_STATIC_RUNTIME)
  target_link_options(gzd_program INTERFACE
    "$<$<CONFIG:Release>:-static-libstdc++;-static-libgcc;LINKER:--gc-sections>")
endif()
