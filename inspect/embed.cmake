# Turns a text file into a string constant of C++: cmake -DINPUT=... -DOUTPUT=... -DNAME=... -P embed.cmake
file(READ ${INPUT} text)
# Compilers limit the length of one literal; adjacent ones are joined.
set(literals "")
string(LENGTH "${text}" length)
set(at 0)
while(at LESS length)
  string(SUBSTRING "${text}" ${at} 8000 part)
  string(APPEND literals "R\"~~~(${part})~~~\"\n")
  math(EXPR at "${at} + 8000")
endwhile()
file(WRITE ${OUTPUT} "#include \"report/assets.h\"\n\nconst char* const ${NAME} =\n${literals};\n")
