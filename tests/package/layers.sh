#!/usr/bin/env bash
# layers.sh SOURCE_ROOT: the layers of the house. Rooms of the engine include rooms above them and know no public class,
# cause or tolerance; public headers include nothing private and name no private file.
# layers.sh SOURCE_ROOT --offences: plants one offence of every kind in a copy, and fails when one of them passes.
set -euo pipefail
root=$1

# The order of the rooms is that of rooms.h.
layers() {
  local rooms
  rooms=$(sed -n 's/^namespace \([a-z_]*\) {}*$/\1/p' "$1/nu/engine/rooms.h" | paste -sd' ')
  (cd "$1" && find nu -name '*.h' -o -name '*.cpp' | sort | xargs awk -v rooms="$rooms" '
    function offence(text) { printf "%s:%d: %s: %s\n", FILENAME, FNR, text, $0; found = 1 }
    BEGIN { count = split(rooms, names, " "); for (i = 1; i <= count; ++i) rank[names[i]] = i }
    FNR == 1 {
      split(FILENAME, path, "/")
      room = path[2] == "engine" && path[3] in rank ? path[3] : ""
      engine = path[2] == "engine"
      public = !engine && path[3] != "internal" && FILENAME ~ /[.]h$/
      if (engine && room == "" && path[3] != "rooms.h") offence("no room of the engine")
    }
    engine && /^ *# *include *"/ {
      split($0, quoted, "\"")
      split(quoted[2], target, "/")
      if (target[2] == "engine") bad = target[3] != "rooms.h" && !(target[3] in rank && rank[target[3]] <= rank[room])
      else bad = quoted[2] != "nu/foundation/constants.h"
      if (bad) offence("the engine includes only its own rooms, upwards in rooms.h")
    }
    room != "" && /^namespace nu/ && $2 != "nu::engine::" room { offence("the namespace is not that of the room") }
    engine && !/^ *\/\// && /(^|[^[:alnum:]_])(CNu[A-Z]|ENu[A-Z]|Nu[GS]et[A-Z])/ {
      offence("the engine knows no public class and no tolerance")
    }
    public && /(internal|engine)\// { offence("a public header names a private file") }
    END { exit found }')
}

if [ "${2-}" != --offences ]; then
  layers "$root"
  exit
fi

copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
# passes FILE LINE: whether the layers hold with the line appended to the file.
passes() {
  rm -rf "$copy/nu"
  cp -R "$root/nu" "$copy"
  mkdir -p "$(dirname "$copy/$1")"
  printf '%s\n' "$2" >> "$copy/$1"
  layers "$copy" > /dev/null
}
passes nu/engine/minimax/minimax.h '#include "nu/engine/least_squares/gauss_newton.h"'
while IFS='|' read -r file line; do
  if passes "$file" "$line"; then
    echo "Passes: $file: $line" >&2
    exit 1
  fi
done << 'OFFENCES'
nu/engine/shapes/vec3.h|#include "nu/engine/minimax/minimax.h"
nu/engine/shapes/vec3.h|#include "nu/foundation/tolerances.h"
nu/engine/shapes/vec3.h|#include "nu/geometry/internal/point_set.h"
nu/engine/shapes/vec3.h|namespace nu::engine::minimax {
nu/engine/shapes/vec3.h|inline double Tolerance() { return NuGetTol(); }
nu/engine/shapes/vec3.h|class CNuPoint;
nu/engine/attic/vec3.h|namespace nu::engine::attic {
nu/geometry/point.h|#include "nu/engine/shapes/vec3.h"
nu/geometry/point.h|// See nu/geometry/internal/conversions.h.
OFFENCES
