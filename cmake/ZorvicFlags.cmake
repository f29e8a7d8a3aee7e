# Every target of the project links zorvic_flags: warnings, Qt defines and sanitizers stand here and nowhere else.
add_library(zorvic_flags INTERFACE)
target_compile_options(zorvic_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Woverloaded-virtual
    -Wnon-virtual-dtor -Wcast-align -Wnull-dereference -Wformat=2
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond> $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op>
    # Log lines and debug data name files relative to the source tree.
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(ZORVIC_WARNINGS_AS_ERRORS)
    target_compile_options(zorvic_flags INTERFACE -Werror)
endif()
target_compile_definitions(zorvic_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_USE_QSTRINGBUILDER)
find_package(Threads REQUIRED)
target_link_libraries(zorvic_flags INTERFACE Threads::Threads)

# Sanitizers are set for the whole tree (generated code too): a half-instrumented program reports what is not there.
if(ZORVIC_SANITIZE)
    add_compile_options(-fsanitize=${ZORVIC_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${ZORVIC_SANITIZE})
    # g++ 12 sees null dereferences in what the sanitizers insert, not in what we wrote.
    target_compile_options(zorvic_flags INTERFACE
        -Wno-null-dereference $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# The sanitized builds spend their time in the compiler and not in the tests: optimising costs more than it brings, but
# for what touches every pixel and sample (ZORVIC_HOT_FLAGS). What is not under test itself, such as tests, benchmarks
# and generated code, is not searched for undefined behaviour (ZORVIC_LIGHT_FLAGS); memory is watched there, too, see
# above.
if(ZORVIC_SANITIZE AND NOT ZORVIC_FUZZ)
    set(ZORVIC_HOT_FLAGS -O1)
    set(ZORVIC_LIGHT_FLAGS -O0 -fno-sanitize=undefined)
endif()
