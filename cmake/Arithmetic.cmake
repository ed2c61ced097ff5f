# The switches that results depend on, in one place. test/frame/BuildSwitches_test.cpp fails without them.
add_library(rk_switches INTERFACE)

# A fused multiply-add rounds once where the arithmetic rounds twice.
target_compile_options(rk_switches INTERFACE -ffp-contract=off -fno-fast-math)

# x87 keeps 64-bit mantissas between steps; every single-precision step must round to float.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_options(rk_switches INTERFACE -msse2 -mfpmath=sse)
endif()

target_compile_options(rk_switches INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor)
if(RK_WERROR)
  target_compile_options(rk_switches INTERFACE -Werror)
endif()
if(RK_SANITIZE)
  target_compile_options(rk_switches INTERFACE -fsanitize=${RK_SANITIZE} -fno-sanitize-recover=all
                         -fno-omit-frame-pointer)
  target_link_options(rk_switches INTERFACE -fsanitize=${RK_SANITIZE})
endif()
if(RK_COVERAGE)
  target_compile_options(rk_switches INTERFACE --coverage)
  target_link_options(rk_switches INTERFACE --coverage)
endif()
