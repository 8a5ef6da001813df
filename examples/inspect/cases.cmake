# Runs the program on good and bad input: cmake -DPROGRAM=... -DPARTS=data/parts -DSCRATCH=directory -P cases.cmake;
# EMULATOR starts programs of another platform.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${SCRATCH})
file(MAKE_DIRECTORY ${SCRATCH})
set(failures 0)

# expect(CODE PATTERN ARGUMENTS...): the exit code, and what the output must match.
function(expect code pattern)
  execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${ARGN} WORKING_DIRECTORY ${SCRATCH}
    RESULT_VARIABLE actual OUTPUT_VARIABLE output ERROR_VARIABLE output TIMEOUT 60)
  if(NOT actual STREQUAL code OR NOT output MATCHES "${pattern}")
    message("inspect ${ARGN}\n  exit code ${actual}, expected ${code}; expected to match: ${pattern}\n${output}")
    math(EXPR failures "${failures} + 1")
    set(failures ${failures} PARENT_SCOPE)
  endif()
endfunction()

# expect_text(CODE PATTERN CONTENT OPTIONS...): the same for a file with that content.
function(expect_text code pattern content)
  file(WRITE ${SCRATCH}/points.txt "${content}")
  expect(${code} "${pattern}" points.txt --feature plane ${ARGN})
  set(failures ${failures} PARENT_SCOPE)
endfunction()

# The shipped parts: every format, every feature, and numbers that the constants of their making foretell.
expect(0 "radius +12\\.50380[0-9].*roundness +0\\.00629.*within tolerance" ${PARTS}/bore.csv --feature circle
  --decimal-comma --tolerance 0.01 --svg bore.svg --json bore.json)
expect(1 "straightness +0\\.00914[0-9].*OUT OF TOLERANCE" ${PARTS}/edge.xyz --feature line --tolerance=0.008 --svg edge.svg)
expect(0 "normal x +-0\\.00035.*flatness +0\\.00464[0-9]" ${PARTS}/plate.asc --feature plane --svg plate.svg)
expect(0 "centre z +74\\.983.*sphericity +0\\.00192[0-9]" ${PARTS}/ball.csv --feature sphere --criterion ls --svg ball.svg)
expect(0 "inner radius +12\\.50067.*outer radius +12\\.50685.*roundness +0\\.00617[0-9].*contact points +4" ${PARTS}/bore.csv
  --feature circle --decimal-comma --criterion mz --svg zone.svg --json zone.json)
expect(0 "radius +12\\.50653[0-9].*contact points +3" ${PARTS}/bore.csv --feature circle --decimal-comma --criterion mc)
expect(0 "radius +12\\.50096[0-9].*contact points +3" ${PARTS}/bore.csv --feature circle --decimal-comma --criterion mi)
expect(0 "straightness +0\\.00845[0-9].*contact points +3" ${PARTS}/edge.xyz --feature line --criterion mz --svg strip.svg)
expect(0 "flatness +0\\.00441[0-9].*contact points +4" ${PARTS}/plate.asc --feature plane --criterion mz --svg slab.svg)
expect(0 "radius +12\\.49995[0-9].*outer radius +12\\.50083.*sphericity +0\\.00175.*contact points +5" ${PARTS}/ball.csv
  --feature sphere --criterion mz --svg shell.svg)
expect(0 "radius +12\\.50069[0-9].*contact points +4" ${PARTS}/ball.csv --feature sphere --criterion mc)
expect(0 "radius +12\\.49913.*contact points +4" ${PARTS}/ball.csv --feature sphere --criterion mi)
expect(0 "axis x +0\\.00209.*radius +22\\.0130[0-9]+.*cylindricity +0\\.0082" ${PARTS}/sleeve.txt --feature cylinder
  --svg sleeve.svg)
expect(0 "inner radius +22\\.01018.*cylindricity +0\\.00748[0-9].*contact points +6" ${PARTS}/sleeve.txt
  --feature cylinder --criterion mz --svg tubes.svg)
expect(0 "radius +22\\.01758[0-9].*contact points +5" ${PARTS}/sleeve.txt --feature cylinder --criterion mc)
expect(0 "radius +22\\.01039[0-9].*contact points +5" ${PARTS}/sleeve.txt --feature cylinder --criterion mi)
expect(0 "semi-angle +0\\.5729[0-9]+ .*conicity +0\\.00435" ${PARTS}/pin.csv --feature cone --svg pin.svg)
expect(0 "inner apex x +-356\\.79.*conicity +0\\.00419[0-9].*contact points +7" ${PARTS}/pin.csv --feature cone
  --criterion mz --svg cones.svg)
expect(0 "major radius +34\\.500.*minor radius +2\\.6142[0-9]+.*contact points +7" ${PARTS}/ring.txt --feature torus
  --criterion mc --svg ring.svg)
expect(0 "semi-axis a +48\\.199.*semi-axis b +31\\.399.*form +0\\.0177" ${PARTS}/flange.xyz --feature ellipse
  --svg flange.svg)
expect(0 "focal length +18\\.348.*form +0\\.0096" ${PARTS}/reflector.csv --feature parabola --svg reflector.svg)
expect(0 "semi-axis a +12\\.400.*semi-axis b +54\\.99.*form +0\\.0136" ${PARTS}/roller.txt --feature hyperbola
  --svg roller.svg)
foreach(picture "shell;contact points" "sleeve;along the axis towards .Z" "tubes;contact points" "cones;contact points" "ring;angle around the tube" "pin;0° towards"
    "flange;fitted ellipse" "reflector;2000:1" "roller;away from the focus" "zone;contact points" "strip;contact points"
    "slab;contact points" "bore;5000:1" "edge;10000:1" "plate;positive towards" "ball;seen from")
  list(GET picture 0 name)
  list(GET picture 1 text)
  file(READ ${SCRATCH}/${name}.svg svg)
  if(NOT svg MATCHES "${text}.*</svg>\n$" OR svg MATCHES "[ '\",-](nan|inf)[ '\",]")
    message(SEND_ERROR "${name}.svg is not the picture it should be")
  endif()
endforeach()
file(READ ${SCRATCH}/bore.json json)
string(JSON form GET "${json}" form)
string(JSON line GET "${json}" smallest line)
if(NOT form MATCHES "^0\\.00629" OR NOT line EQUAL 986)
  message(SEND_ERROR "bore.json holds form ${form} and line ${line}")
endif()

file(READ ${SCRATCH}/zone.json json)
string(JSON contacts LENGTH "${json}" contact_lines)
if(NOT contacts EQUAL 4)
  message(SEND_ERROR "zone.json names ${contacts} contact points")
endif()

# A part of a turn fills the map.
file(STRINGS ${PARTS}/sleeve.txt lines)
set(arc "")
foreach(line IN LISTS lines)
  if(line MATCHES "^(C/deg|3[45][0-9]|[0-3]?[0-9]\\.)")
    string(APPEND arc "${line}\n")
  endif()
endforeach()
file(WRITE ${SCRATCH}/arc.txt "${arc}")
expect(0 "radius +22\\.00.*cylindricity +0\\.002" arc.txt --feature cylinder --svg arc.svg)
file(READ ${SCRATCH}/arc.svg svg)
if(NOT svg MATCHES ">340°<.*>0°<.*>30°<" OR svg MATCHES ">180°<")
  message(SEND_ERROR "arc.svg does not show from 340 to 40 degrees")
endif()

# What files may look like: the plane through (1 2 3), (4 5 9), (7 8 1), as three points determine it.
set(plane "point x +4\\.0+ .*point y +5\\.0+ .*point z +4\\.333333")
string(ASCII 239 187 191 bom)
expect_text(0 "${plane}" "${bom}X [mm]\tZ [mm]\tname\tY [mm]\r\n1\t3\ta b\t2\r\n4\t9\tc, d\t\t5\r\n7\t1\te\t8\r\n")
expect_text(0 "${plane}" "1,2,3\r4,5,9\r7,8,1\r")
expect_text(0 "${plane}" "3\n1 2 3 # first\n\n4 5 9\n// between\n7 8 1")
expect_text(0 "${plane}" "\"X [mm]\";\"Z [mm]\";\"Y [mm]\"\n\"1,0\";\"3,0\";\"2,0\";\n4;9;5;\n7;1;8;\n" --decimal-comma)
expect_text(0 "${plane}" "% id x y z\n1 1 2 3\n2 4 5 9\n3 7 8 1\n")
expect_text(0 "${plane}" "a 1 2 3\nb 4 5 9\nc 7 8 1\n" --columns 2,3,4)
expect_text(0 "${plane}" "1st line\n+1. 2e0 .3e1 0 0 1\n4 5 9 0 0 1\n7 8 1 0 0 1\n" --skip 1)
expect_text(0 "point z +0\\.0+ " "1 2\n4 5\n7 9\n")

# An inscribed circle of an arc up to half a turn is not the circle of the arc.
expect_text(0 "warning +the points cover half a circle at most" "5 0\n4 3\n3 4\n0 5\n" --feature circle --criterion mi)

# What is refused, with the place and the expectation.
expect_text(2 "points.txt: no points" "")
expect_text(2 "no points in 2 lines" "a b c\n# 1 2 3\n")
expect_text(2 "points.txt:2: column 2: 'x' is not a number; expected a coordinate such as 12\\.345" "1 2 3\n4 x 6\n")
expect_text(2 "points.txt:2: expected 3 columns as in line 1, found 2" "1 2 3\n4 5\n")
expect_text(2 "points.txt:2: expected at least 2 columns, found 1" "3\n4\n")
expect_text(2 "points.txt:1: expected at least 5 columns, found 3" "1 2 3\n" --columns 1,2,5)
expect_text(2 "give --decimal-comma" "1,5 2,5 3,5\n")
expect_text(2 "--decimal-comma is given" "1.5 2,5 3,5\n" --decimal-comma)
expect_text(2 "column 1: 'nan' is not a finite number" "nan 2 3\n")
expect_text(2 "column 3: '-inf' is not a finite number" "1 2 -inf\n")
expect_text(2 "column 1: '1e999'" "1e999 2 3\n")
expect_text(2 "only counts the points" "1 1 2 3\n2 4 5 9\n3 7 8 1\n")
string(ASCII 255 254 utf16)
expect_text(2 "UTF-16" "${utf16}1 2 3\n")
string(REPEAT "1234567 " 10000 endless)
expect_text(2 "points.txt:2: longer than" "1 2 3\n${endless}\n")
expect_text(3 "at least 3 are needed" "1 2 3\n4 5 6\n")
expect_text(3 "on one line" "1 2 3\n2 3 4\n3 4 5\n4 5 6\n")
expect(2 "holds a NUL byte|longer than" ${PROGRAM} --feature line)
expect(2 "cannot be (read|opened)" . --feature line)
expect(2 "nowhere.txt: cannot be opened" nowhere.txt --feature line)

# Usage, and files that cannot be written.
set(edge ${PARTS}/edge.xyz --feature)
expect(0 "usage: inspect FILE" --help)
expect(2 "FILE is missing")
expect(2 "--feature is missing; available are line" ${PARTS}/edge.xyz)
expect(2 "unknown feature 'blob'; available are line" ${edge} blob)
expect(2 "torus by least squares is not available yet; available are line" ${edge} torus)
expect(2 "unknown criterion 'l1'" ${edge} line --criterion l1)
expect(2 "unknown option '--colour'" ${edge} line --colour)
expect(2 "NAME is missing" ${edge})
expect(2 "'0,01' is not a length" ${edge} line --tolerance 0,01)
expect(2 "not a list of two or three columns" ${edge} line --columns 1,0)
expect(2 "expected mm, um, m or in" ${edge} line --unit furlong)
expect(2 "would overwrite FILE" points.txt --feature line --json ${SCRATCH}/points.txt)
expect(2 "name the same file" ${edge} line --svg a --json ./a)
expect(2 "nowhere/a.svg: cannot be written" ${edge} line --svg nowhere/a.svg)
if(EXISTS /dev/full)
  expect(2 "/dev/full: cannot be written" ${edge} line --json /dev/full)
endif()
file(GLOB left ${SCRATCH}/*.part ${SCRATCH}/a)
if(failures OR left)
  message(FATAL_ERROR "${failures} cases failed; left behind: '${left}'")
endif()
