# Runs the program on good and bad input: cmake -DPROGRAM=... -DPARTS=data/parts -DSCRATCH=directory -P cases.cmake;
# EMULATOR starts programs of another platform, which takes seconds: there, only what may differ by platform is run.
cmake_minimum_required(VERSION 3.25)
set(own ${SCRATCH}-native)
file(REMOVE_RECURSE ${SCRATCH} ${own})
file(MAKE_DIRECTORY ${SCRATCH} ${own})
set(failures 0)

# run(DIRECTORY CODE PATTERN ARGUMENTS...): the exit code, and what the output must match; `input`, if set, is a file for
# standard input.
function(run directory code pattern)
  if(input)
    set(redirection INPUT_FILE ${directory}/${input})
  endif()
  execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${ARGN} WORKING_DIRECTORY ${directory} ${redirection}
    RESULT_VARIABLE actual OUTPUT_VARIABLE output ERROR_VARIABLE output TIMEOUT 60)
  if(NOT actual STREQUAL code OR NOT output MATCHES "${pattern}")
    message("inspect ${ARGN}\n  exit code ${actual}, expected ${code}; expected to match: ${pattern}\n${output}")
    math(EXPR failures "${failures} + 1")
    set(failures ${failures} PARENT_SCOPE)
  endif()
endfunction()

# On every platform, with files that are the same on each.
macro(expect_everywhere)
  run(${SCRATCH} ${ARGN})
endmacro()

macro(expect)
  if(NOT EMULATOR)
    run(${own} ${ARGN})
  endif()
endmacro()

# expect_text(CODE PATTERN CONTENT OPTIONS...): the same for a file with that content.
function(expect_text code pattern content)
  file(WRITE ${own}/points.txt "${content}")
  expect(${code} "${pattern}" points.txt --feature plane ${ARGN})
  set(failures ${failures} PARENT_SCOPE)
endfunction()

# The shipped parts: every format, every feature, and numbers that the constants of their making foretell.
expect_everywhere(0 "columns +2 .X .mm.., 3 .Y .mm.., 4.*unit +mm .as the header says.*radius +12\\.50380[0-9].*diameter +25\\.00761[0-9].*roundness RONt +0\\.00629.*peak RONp +0\\.003149.*valley RONv +0\\.003143.*degrees of freedom +3597.*u.radius. +0\\.000026.*within.*C in ISO 1101.*MZCI.*inner radius +12\\.50067.*outer radius +12\\.50685.*RONt +0\\.00617[0-9].*on the outer side +line 134, 1469.*on the inner side +line 986, 3204.*minimum circ.*radius +12\\.50653[0-9].*contact points +3.*maximum.*radius +12\\.50096[0-9].*contact points +3.*summary"
  ${PARTS}/bore.csv --feature Circle --criterion ALL --decimal-comma --tolerance 0.01 --svg ./ --json bore.json)
expect_everywhere(1 "straightness STRt +0\\.00914[0-9].*OUT OF TOLERANCE.*STRt +0\\.00845[0-9].*contact points +3" ${PARTS}/edge.xyz
  --feature line --criterion G,mz --tolerance=0.008 --svg ./)
expect_everywhere(0 "normal x +-0\\.00035.*flatness FLTt +0\\.00464[0-9].*FLTt +0\\.00441[0-9].*contact points +4" ${PARTS}/plate.asc
  --feature plane --criterion ls,Chebyshev --svg ./)
expect_everywhere(0 "centre z +74\\.983.*sphericity +0\\.00192[0-9].*radius +12\\.49995[0-9].*outer radius +12\\.50083.*sphericity +0\\.00175.*contact points +5.*radius +12\\.50069[0-9].*contact points +4.*radius +12\\.49913.*contact points +4"
  ${PARTS}/ball.csv --feature sphere --criterion all --svg ./)
expect_everywhere(0 "axis x +0\\.00209.*radius +22\\.0130[0-9]+.*cylindricity CYLt +0\\.0082.*inner radius +22\\.01018.*CYLt +0\\.00748[0-9].*contact points +6.*best of all +proven.*certificate +holds.*lower bound, zone +0\\.00748.*gap +0\\.000000.*radius +22\\.01758[0-9].*contact points +5.*radius +22\\.01039[0-9].*contact points +5"
  ${PARTS}/sleeve.txt --feature cylinder --criterion ls,mz,mc,mi --prove 100000 --svg ./)
expect_everywhere(0 "semi-angle +0\\.5729[0-9]+ .*cone form +0\\.00435.*inner apex x +-356\\.79.*cone form +0\\.00419[0-9].*contact points +7"
  ${PARTS}/pin.csv --feature cone --criterion all --svg ./)
expect_everywhere(0 "u.minor radius. +0\\.000050.*major radius +34\\.500.*minor radius +2\\.6142[0-9]+.*contact points +7" ${PARTS}/ring.txt --feature torus
  --criterion all --svg ./)
expect_everywhere(3 "semi-axis a +48\\.199.*semi-axis b +31\\.399.*form +0\\.0177.*focal length +18\\.348.*form +0\\.0096.*semi-axis a +12\\.400.*semi-axis b +54\\.99.*form +0\\.0136"
  ${PARTS}/flange.xyz ${PARTS}/reflector.csv ${PARTS}/roller.txt --feature ellipse,parabola,hyperbola --svg ./ --json conics.json)
foreach(picture "ball-sphere-mz;contact points" "sleeve-cylinder-ls;along the axis towards .Z"
    "sleeve-cylinder-mz;contact points" "pin-cone-mz;contact points" "ring-torus-mz;angle around the tube"
    "pin-cone-ls;0° towards" "flange-ellipse-ls;fitted ellipse" "reflector-parabola-ls;2000:1"
    "roller-hyperbola-ls;away from the focus" "bore-circle-mz;contact points, inner side" "edge-line-mz;contact points"
    "plate-plane-mz;contact points" "bore-circle-ls;unit mm .as the header says.*5000:1" "edge-line-ls;10000:1"
    "plate-plane-ls;positive towards" "ball-sphere-ls;seen from")
  list(GET picture 0 name)
  list(GET picture 1 text)
  file(READ ${SCRATCH}/${name}.svg svg)
  if(NOT svg MATCHES "${text}.*</svg>\n$" OR svg MATCHES "[ '\",-](nan|inf)[ '\",]")
    message(SEND_ERROR "${name}.svg is not the picture it should be")
  endif()
endforeach()

# expect_json(FILE VALUE PATH...)
function(expect_json name value)
  file(READ ${SCRATCH}/${name} json)
  string(JSON found GET "${json}" ${ARGN})
  if(NOT found STREQUAL value)
    message(SEND_ERROR "${name} holds '${found}' at ${ARGN}, expected '${value}'")
  endif()
endfunction()
expect_json(bore.json 1 version)
expect_json(bore.json 986 results 0 smallest line)
expect_json(bore.json RONt results 1 form_symbol)
expect_json(bore.json "X [mm]" results 2 columns 0 name)
expect_json(bore.json inner results 1 contacts 1 side)
expect_json(bore.json 3597 results 0 uncertainty degrees_of_freedom)
expect_json(conics.json "ellipse form" results 0 form_name)
file(READ ${SCRATCH}/conics.json json)
string(JSON error GET "${json}" results 2 error)
if(NOT error MATCHES "the hyperbola cannot be fitted")
  message(SEND_ERROR "conics.json holds '${error}'")
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
set(input arc.txt)
expect_everywhere(0 ">340°<.*>0°<.*>30°<.*</svg>.*radius +22\\.00.*cylindricity CYLt +0\\.002|radius +22\\.00.*cylindricity CYLt +0\\.002.*>340°<.*>0°<.*>30°<"
  - --feature cylinder --svg -)
unset(input)

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

# Columns and units that the header names, or the user.
set(both "No,NomX,NomY,NomZ,ActX,ActY,ActZ\n1,0,0,0,1,2,3\n2,1,0,0,4,5,9\n3,0,1,0,7,8,1\n")
expect_text(2 "points.txt:2: the header names several points; give --columns NomX,NomY,NomZ or ActX,ActY,ActZ" "${both}")
expect_text(0 "columns +5 .ActX., 6 .ActY., 7 .ActZ.\n  unit +mm .assumed.*${plane}" "${both}" --columns actx,ActY,ACTZ)
expect_text(2 "give --columns 1,2,3 or 4,5,6" "X,Y,Z,X,Y,Z\n1,2,3,0,0,0\n")
expect_text(0 "columns +1 .X_act.*unit +in .as.*${plane}[0-9]* +in\n" "X_act,Y_act,Z_act,dx,dy,dz\nin,in,in,in,in,in\n1,2,3,0,0,0\n4,5,9,0,0,0\n7,8,1,0,0,0\n")
expect_text(0 "unit +in .as" "x(inch),y(inch),z(inch)\n1,2,3\n4,5,9\n7,8,1\n")
expect_text(0 "unit +µm .as.*point z +4\\.333 +µm" "# Units: micron\n# No X Y Z\n1 1 2 3\n2 4 5 9\n3 7 8 1\n")
expect_text(0 "unit +cm\n.*${plane}" "X [mm] Y [mm] Z [mm]\n1 2 3\n4 5 9\n7 8 1\n" --unit CM)
expect_text(0 "columns +2 .X., 3 .Y.\n" "No;X;Y\n7;2;3\n8;5;9\n9;8;1\n" --feature line)
expect_text(2 "unknown unit 'ft'; give --unit mm, um, nm, cm, m, in" "X [ft]\tY [ft]\tZ [ft]\n1\t2\t3\n")
expect_text(2 "different units, mm and in" "X [mm],Y [in],Z [mm]\n1,2,3\n")
expect_text(2 "names 'R', 'Phi', 'Z', not x, y and z" "R Phi Z\n1 2 3\n")
expect_text(2 "names 5 columns, the points have 4" "Point No X Y Z\n1 1 2 3\n")
expect_text(2 "no column is called 'U'; the header names 'X', 'Y', 'Z'" "X,Y,Z\n1,2,3\n" --columns U,Y,Z)
expect_text(2 "no header names the columns" "1,2,3\n" --columns X,Y,Z)

# An inscribed circle of an arc up to half a turn is not the circle of the arc.
expect_text(0 "warning +the points cover half a circle at most" "5 0\n4 3\n3 4\n0 5\n" --feature circle --criterion mi)
expect_text(0 "valley RONv +0\\.26093.*peaks point +inwards" "5 0\n0 5\n-5 0\n0 -6\n" --feature circle --material outside)

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
expect_text(3 "the plane cannot be fitted: .*2 points.* 3" "1 2 3\n4 5 6\n")
expect_text(3 "the plane cannot be fitted: .*one line" "1 2 3\n2 3 4\n3 4 5\n4 5 6\n")
expect(2 "holds a NUL byte|longer than" ${PROGRAM} --feature line)
expect(2 "cannot be (read|opened)" . --feature line)
expect(2 "nowhere.txt: cannot be opened" nowhere.txt --feature line)

# Usage, and files that cannot be written.
set(edge ${PARTS}/edge.xyz --feature)
expect(0 "usage: inspect FILE" -h)
expect(0 "inspect, on Nu [0-9]+" --version)
expect(2 "FILE is missing")
expect(2 "FILE is given twice: 'a'" a a)
expect(2 "--feature is missing; available are line" ${PARTS}/edge.xyz)
expect(2 "unknown feature 'blob'; available are line" ${edge} line,blob)
expect(2 "--feature: a name between commas is empty" ${edge} line,)
expect(2 "torus by maximum inscribed is not available; available are line" ${edge} torus --criterion mi)
expect(2 "unknown criterion 'l1'" ${edge} line --criterion l1)
expect(2 "unknown option '--colour'" ${edge} line --colour)
expect(2 "NAMES is missing" ${edge})
expect(2 "'0,01' is not a length" ${edge} line --tolerance 0,01)
expect(2 "not a list of two or three columns" ${edge} line --columns 1,0)
expect(2 "names a column twice" ${edge} line --columns 1,1)
expect(2 "expected one of mm, um" ${edge} line --unit furlong)
expect(2 "not a number of boxes" ${edge} line --prove many)
expect(2 "expected inside or outside" ${edge} line --material steel)
expect(2 "--json '[^']*' would overwrite FILE" points.txt --feature line --json ${own}/points.txt)
expect(2 "--svg './a' would overwrite --json" ${edge} line --json a --svg ./a)
expect(2 "2 pictures need a directory" ${edge} line --criterion all --svg a.svg)
expect_everywhere(2 "straightness.*nowhere/a.svg: cannot be written|cannot be written.*straightness" nothing.xyz ${edge} line --svg nowhere/a.svg/ --json left.json)
expect_json(left.json line results 1 feature)
if(EXISTS /dev/full AND NOT EMULATOR)
  expect(2 "/dev/full: cannot be written" ${edge} line --json /dev/full --svg written.svg)
  if(NOT EXISTS ${own}/written.svg)
    message(SEND_ERROR "the picture is missing where JSON cannot be written")
  endif()
endif()
file(GLOB left ${SCRATCH}/*.part ${own}/*.part ${own}/a)
if(failures OR left)
  message(FATAL_ERROR "${failures} cases failed; left behind: '${left}'")
endif()
