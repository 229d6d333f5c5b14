# Writes OUT.js, the FILES of the folder FROM as one function of PARAMETERS, and OUT.cpp, the same as the C++ text
# VARIABLE.
#   cmake -DFILES=a.js;b.js -DFROM=FOLDER -DOUT=FILE -DVARIABLE=kName -DPARAMETERS=a,b -P embed.cmake
# The text is an array of characters, because compilers limit the length of a string literal.
set(script "(function (${PARAMETERS}) {\n\"use strict\";\n")
foreach(file ${FILES})
  file(READ ${FROM}/${file} text)
  string(APPEND script "\n${text}")
endforeach()
string(APPEND script "\n})")
file(WRITE ${OUT}.js "${script}")

file(READ ${OUT}.js bytes HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
if(bytes MATCHES "0x[89a-f]")
  message(FATAL_ERROR "the script has a character that is not ASCII")
endif()
file(WRITE ${OUT}.cpp "#include \"dom_script.h\"\n
namespace tvbrowser {\n
static const char kText[] = {\n${bytes}0};
const char* const ${VARIABLE} = kText;\n
}  // namespace tvbrowser\n")
