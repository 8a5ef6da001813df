# Reports as files: cmake -DPROGRAM=... -DPARTS=data/parts -DSCRATCH=directory -P report_cases.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/case_tools.cmake)

set(ENV{SOURCE_DATE_EPOCH} 1700000000)
expect_everywhere(1 "OUT OF TOLERANCE" ${PARTS}/carrier.toml --html report.html --json report.json --csv report.csv --qif report.qif)
foreach(ending html json csv qif)
  file(READ ${SCRATCH}/report.${ending} ${ending})
endforeach()

# Every format gives the same numbers, to the last digit.
file(STRINGS ${SCRATCH}/report.json measured REGEX "\"measured\": [-0-9]")
list(LENGTH measured count)
if(count LESS 10)
  message(SEND_ERROR "report.json holds ${count} measured values")
endif()
foreach(line IN LISTS measured)
  string(REGEX MATCH "[-+.0-9e]+,$" value "${line}")
  string(REGEX REPLACE ",$" "" value "${value}")
  string(FIND "${html}" "data-value=\"${value}\"" inHtml)
  string(FIND "${csv}" ",${value}," inCsv)
  string(FIND "${qif}" ">${value}</Value>" inQif)
  if(inHtml LESS 0 OR inCsv LESS 0 OR inQif LESS 0)
    message(SEND_ERROR "${value} of report.json is not in all formats: ${inHtml} ${inCsv} ${inQif}")
  endif()
endforeach()

# The page is complete, asks nothing of the network and holds no undefined number.
string(REPLACE "http://www.w3.org/2000/svg" "" html "${html}")
if(NOT html MATCHES "^<!DOCTYPE html>.*2023-11-14 22:13:20 UTC.*data-points.*</html>\n$" OR html MATCHES "https?://|[ '\",>-](nan|inf)[ '\",<]")
  message(SEND_ERROR "report.html is not the page it should be")
endif()
if(NOT qif MATCHES "^<.xml.*<PerpendicularityCharacteristicMeasurement id=.*<CharacteristicStatusEnum>FAIL<.*</QIFDocument>\n$")
  message(SEND_ERROR "report.qif is not the document it should be")
endif()

# What fails is said on the page; what the plan names is no markup.
file(WRITE ${SCRATCH}/two.txt "0 0 0\n1 1 1\n")
file(WRITE ${SCRATCH}/two.toml "title = '<b>two</b> & more'\n[[feature]]\nname = '<i>'\ntype = 'plane'\npoints = 'two.txt'\n[[characteristic]]\nfeature = '<i>'\nkind = 'flatness'\ntolerance = 0.1\n")
expect_everywhere(3 "failed" two.toml --html two.html --json two.json --qif two.qif)
file(READ ${SCRATCH}/two.html html)
if(NOT html MATCHES "<h1>&lt;b&gt;two.*class=\"failure\">[^<]*cannot be fitted" OR html MATCHES "<b>|<i>two")
  message(SEND_ERROR "two.html is not the page it should be")
endif()

# Features without a plan go on the same page, and into the same tables.
expect_everywhere(2 "RONt" ${PARTS}/bore.csv nothing.csv --feature circle --criterion ls,mz --decimal-comma --tolerance 0.01 --html circles.html --csv circles.csv --qif circles.qif)
file(READ ${SCRATCH}/circles.html html)
if(NOT html MATCHES "data-value=\"0\\.00629[0-9]+\".*data-value=\"0\\.00617[0-9]+\".*class=\"failure\">[^<]*nothing.csv: cannot be opened")
  message(SEND_ERROR "circles.html is not the page it should be")
endif()

file(READ ${SCRATCH}/circles.csv csv)
file(READ ${SCRATCH}/circles.qif qif)
if(NOT csv MATCHES "0\\.00629[0-9]+.*LSCI .ISO 12181-1., unfiltered.*0\\.00617.*cannot be opened" OR NOT qif MATCHES "0\\.00629[0-9]+</Value>.*NOT_MEASURED")
  message(SEND_ERROR "circles.csv or circles.qif is not what it should be:\n${csv}")
endif()

# One output that cannot be written leaves the others.
expect(2 "nowhere.*cannot be written" ${PARTS}/carrier.toml --html nowhere/r.html/ --json kept.json)
if(NOT EMULATOR AND NOT EXISTS ${own}/kept.json)
  message(SEND_ERROR "kept.json is missing")
endif()
finish()
