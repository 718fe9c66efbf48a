# Warnings, sanitizers and Qt's strictness for every target of this project.
if(MSVC)
  add_compile_options(/W4 /permissive- /utf-8)
  if(KORVOWEB_WERROR)
    add_compile_options(/WX)
  endif()
else()
  add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor)
  if(KORVOWEB_WERROR)
    add_compile_options(-Werror)
  endif()
endif()

add_compile_definitions(
  QT_NO_CAST_TO_ASCII
  QT_NO_CAST_FROM_ASCII
  QT_NO_URL_CAST_FROM_STRING
  QT_NO_KEYWORDS
  QT_DEPRECATED_WARNINGS
  QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

if(KORVOWEB_SANITIZE)
  add_compile_options(-fsanitize=${KORVOWEB_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KORVOWEB_SANITIZE})
endif()
