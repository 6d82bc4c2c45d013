# Sanitizer builds, for every target of the project (GCC and Clang).
if(ALGOLOGIC_SANITIZER STREQUAL "address")
    set(ALGOLOGIC_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=undefined
                                  -fno-omit-frame-pointer)
elseif(ALGOLOGIC_SANITIZER STREQUAL "thread")
    set(ALGOLOGIC_SANITIZER_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
elseif(NOT ALGOLOGIC_SANITIZER STREQUAL "")
    message(FATAL_ERROR "ALGOLOGIC_SANITIZER must be empty, address or thread")
endif()

if(ALGOLOGIC_SANITIZER_FLAGS)
    add_compile_options(${ALGOLOGIC_SANITIZER_FLAGS})
    add_link_options(${ALGOLOGIC_SANITIZER_FLAGS})
endif()
