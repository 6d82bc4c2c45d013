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

# libFuzzer build (Clang only): every target gets coverage instrumentation
# and AddressSanitizer + UndefinedBehaviorSanitizer; the fuzz targets link
# the fuzzer's own main.
option(ALGOLOGIC_FUZZ "Build the fuzz targets as libFuzzer binaries (Clang)" OFF)
if(ALGOLOGIC_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "ALGOLOGIC_FUZZ needs Clang (CXX=clang++)")
    endif()
    if(ALGOLOGIC_SANITIZER_FLAGS)
        message(FATAL_ERROR "ALGOLOGIC_FUZZ brings its own sanitizers; leave ALGOLOGIC_SANITIZER empty")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined
                        -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()
