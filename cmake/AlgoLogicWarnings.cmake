# Warning flags shared by every target of the project.
function(algologic_set_warnings target)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /utf-8)
        if(ALGOLOGIC_WERROR)
            target_compile_options(${target} PRIVATE /WX)
        endif()
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                               -Wnon-virtual-dtor -Woverloaded-virtual)
        if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
            # Qt's qCDebug(category) expands to a variadic macro called with
            # no variadic argument, which -Wpedantic flags under Clang.
            target_compile_options(${target} PRIVATE -Wno-gnu-zero-variadic-macro-arguments)
        endif()
        if(ALGOLOGIC_WERROR)
            target_compile_options(${target} PRIVATE -Werror)
        endif()
    endif()
endfunction()
