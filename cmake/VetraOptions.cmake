# Warnings and sanitizers shared by every target of the project.
add_library(vetra_warnings INTERFACE)
target_compile_options(vetra_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow
                       $<$<BOOL:${VETRA_WERROR}>:-Werror>)

if(VETRA_SANITIZE)
  add_compile_options(-fsanitize=${VETRA_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VETRA_SANITIZE})
endif()

# Fuzz builds instrument all code for coverage; the targets link libFuzzer.
if(VETRA_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
