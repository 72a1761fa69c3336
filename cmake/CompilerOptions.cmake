# Options that every target of this project compiles with, carried by the interface target corvane_options.
add_library(corvane_options INTERFACE)
target_compile_options(
  corvane_options
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wconversion
            -Wshadow
            -Werror
            # At -O3 g++ 12 sees std::string's operator+ copy onto itself, which it does not.
            $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
            # Results must not depend on whether the compiler fuses a multiplication with an addition.
            -ffp-contract=off)

if(CORVANE_SANITIZE STREQUAL "address")
  set(corvane_sanitize_flags -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(CORVANE_SANITIZE STREQUAL "thread")
  set(corvane_sanitize_flags -fsanitize=thread -fno-omit-frame-pointer)
elseif(CORVANE_SANITIZE)
  message(FATAL_ERROR "CORVANE_SANITIZE must be empty, address or thread")
endif()
if(CORVANE_COVERAGE)
  list(APPEND corvane_sanitize_flags --coverage)
endif()
target_compile_options(corvane_options INTERFACE ${corvane_sanitize_flags})
target_link_options(corvane_options INTERFACE ${corvane_sanitize_flags})
