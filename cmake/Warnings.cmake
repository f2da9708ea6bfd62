# Every target of the project links this: the same warnings everywhere, all of them errors.
add_library(korvel_warnings INTERFACE)
target_compile_options(korvel_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# GCC 12 sees overlapping copies in every inlined text + std::string.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(korvel_warnings INTERFACE -Wno-restrict)
endif()

# Sanitizers must be the same in the plug-in and in every program that loads it.
if(KORVEL_FUZZ OR KORVEL_SANITIZE STREQUAL "address")
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(KORVEL_SANITIZE STREQUAL "thread")
    add_subdirectory(tests/threads)
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    # The sanitizer knows no fences; Asio's own locks say the same.
    add_compile_definitions(BOOST_ASIO_DISABLE_FENCED_BLOCK)
    add_link_options(-fsanitize=thread)
    link_libraries(korvel_glib_locks)
elseif(KORVEL_SANITIZE)
    message(FATAL_ERROR "KORVEL_SANITIZE is address or thread, not ${KORVEL_SANITIZE}")
endif()
