# Fails unless the Windows library LIBRARY exports what REFERENCE, the Linux library, does, and needs no DLL but those of
# Windows and of its compiler's runtime, which it shares with its host: each copy would count exceptions by itself.
if(NOT EXISTS ${REFERENCE})
  message(FATAL_ERROR "build the preset check first: there is no ${REFERENCE}")
endif()
execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE dll COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${NM} -D --defined-only -f posix ${REFERENCE} OUTPUT_VARIABLE elf COMMAND_ERROR_IS_FATAL ANY)

string(REGEX MATCHALL "DLL Name: [^\n]+" needed "${dll}")
list(TRANSFORM needed REPLACE "DLL Name: " "")
list(REMOVE_ITEM needed KERNEL32.dll msvcrt.dll libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
if(needed)
  message(SEND_ERROR "needs ${needed}")
endif()

string(REGEX REPLACE "^.*Name Pointer\\] Table" "" dll "${dll}")
string(REGEX REPLACE "\n\n.*$" "\n" dll "${dll}")
string(REGEX MATCHALL "[^ \n]+\n" dll "${dll}")
string(REGEX MATCHALL "[^\n]+\n" elf "${elf}")
list(TRANSFORM dll STRIP)
list(TRANSFORM elf REPLACE " .*$" "")
list(LENGTH elf count)
# The names of types are part of the type information there.
list(FILTER elf EXCLUDE REGEX "^_ZTS")
set(missing ${elf})
list(REMOVE_ITEM missing ${dll})
# Virtual tables and types of the standard library that every program has for itself.
list(FILTER dll EXCLUDE REGEX "^(_ZTV|_ZTISt)")
set(extra ${dll})
list(REMOVE_ITEM extra ${elf})
if(missing OR extra OR count LESS 1000)
  message(SEND_ERROR "not exported: ${missing}\nexported here alone: ${extra}\n${count} names")
endif()
