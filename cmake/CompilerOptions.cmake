# One interface target that every library and program of the tree links: language level, warnings,
# sanitizers, and the switches that make Qt strict.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

add_library(updown_options INTERFACE)
target_compile_options(updown_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wimplicit-fallthrough -Werror)
# What Debian builds its own packages with. The sanitizers replace fortified functions by their own.
# The debugging records name the sources from the tree's root, so that no build's place is told.
if(NOT UPDOWN_SANITIZE)
  set(optimized "$<CONFIG:Release,RelWithDebInfo>")
  target_compile_options(updown_options INTERFACE
    $<${optimized}:-U_FORTIFY_SOURCE> $<${optimized}:-D_FORTIFY_SOURCE=2>
    $<${optimized}:-fstack-protector-strong>
    $<${optimized}:-fdebug-prefix-map=${PROJECT_SOURCE_DIR}=.>)
  target_link_options(updown_options INTERFACE
    $<${optimized}:LINKER:-z,relro> $<${optimized}:LINKER:-z,now>)
endif()
if(UPDOWN_SANITIZE)
  target_compile_options(updown_options INTERFACE
    -fsanitize=${UPDOWN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(updown_options INTERFACE -fsanitize=${UPDOWN_SANITIZE})
endif()

add_library(updown_qt_options INTERFACE)
target_link_libraries(updown_qt_options INTERFACE updown_options)
target_compile_definitions(updown_qt_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS
  QT_NO_CONTEXTLESS_CONNECT QT_STRICT_ITERATORS)
