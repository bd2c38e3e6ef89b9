# Fails when a file includes across a forbidden direction. Run as
#   cmake -DROOT=<project root> -P check_layout.cmake
# Project headers may only be included along the arrows
#   ui -> app -> probe, store -> core, and inside the core
#   monitor -> base; history -> monitor, base; space -> base; clean -> space, monitor, base;
# inside the probe, system/ and files/ share only the helpers at probe/; inside the app, the
# models never include the command-line modes nor the desktop's services in app/desktop (which
# implement the models' interfaces and never include the modes). Test files (*_test.cpp) may
# use anything their top folder may, plus testing/; nothing else includes testing/. The core
# includes only the standard library, Qt appears only in ui/ (and the widget benchmarks,
# bench/ui_*) and SQLite only in store/.
if(NOT ROOT)
  message(FATAL_ERROR "check_layout.cmake needs -DROOT=<project root>")
endif()

# Area "=" the regular expression its quoted project includes must match.
set(rules
  "core/base=^core/base/"
  "core/monitor=^core/(monitor|base)/"
  "core/history=^core/(history|monitor|base)/"
  "core/space=^core/(space|base)/"
  "core/clean=^core/(clean|space|monitor|base)/"
  "core=^core/"
  "probe/system=^(probe/system/|probe/[^/]+$|core/)"
  "probe/files=^(probe/files/|probe/[^/]+$|core/)"
  "probe=^(probe/[^/]+$|core/)"
  "store=^(store/|core/)"
  "app/models=^(app/models/|app/[^/]+$|probe/|store/|core/)"
  "app/desktop=^(app/desktop/|app/models/|app/[^/]+$|probe/|store/|core/)"
  "app=^(app/|probe/|store/|core/)"
  "ui=^(ui/|app/|probe/|store/|core/)"
  "bench=^(bench/|app/|probe/|store/|core/|testing/)"
  "testing=^(testing/|app/|probe/|store/|core/)")
# What lies below each top folder, for its tests.
set(below_core "core/")
set(below_probe "core/")
set(below_store "core/")
set(below_app "probe/|store/|core/")
set(below_ui "app/|probe/|store/|core/")
set(below_bench "app/|probe/|store/|core/")
set(project_folders "^(core|probe|store|app|ui|bench|testing)/")

# The longest area that holds `file` (relative to ROOT), or "" when none does.
function(area_of file out)
  set(best "")
  foreach(rule ${rules})
    string(FIND "${rule}" "=" at)
    string(SUBSTRING "${rule}" 0 ${at} area)
    string(LENGTH "${area}" length)
    string(LENGTH "${best}" best_length)
    if(file MATCHES "^${area}/" AND length GREATER best_length)
      set(best "${area}")
    endif()
  endforeach()
  set(${out} "${best}" PARENT_SCOPE)
endfunction()

function(allowed_of area out)
  foreach(rule ${rules})
    string(FIND "${rule}" "=" at)
    string(SUBSTRING "${rule}" 0 ${at} name)
    if(name STREQUAL area)
      math(EXPR at "${at} + 1")
      string(SUBSTRING "${rule}" ${at} -1 pattern)
      set(${out} "${pattern}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${out} "" PARENT_SCOPE)
endfunction()

file(GLOB_RECURSE files RELATIVE "${ROOT}"
     "${ROOT}/core/*.h" "${ROOT}/core/*.cpp" "${ROOT}/probe/*.h" "${ROOT}/probe/*.cpp"
     "${ROOT}/store/*.h" "${ROOT}/store/*.cpp" "${ROOT}/app/*.h" "${ROOT}/app/*.cpp"
     "${ROOT}/ui/*.h" "${ROOT}/ui/*.cpp" "${ROOT}/bench/*.h" "${ROOT}/bench/*.cpp"
     "${ROOT}/testing/*.h" "${ROOT}/testing/*.cpp")
set(bad "")
foreach(f ${files})
  area_of("${f}" area)
  if(f MATCHES "_test\\.cpp$")
    string(REGEX MATCH "^[a-z]+" top "${f}")
    set(allowed "^(${top}/|testing/|${below_${top}})")
  elseif(f MATCHES "^bench/ui_")
    # A benchmark of widgets (bench/ui_*_bench.cpp) measures ui/, so it may include it and Qt.
    set(allowed "^(ui/|bench/|app/|probe/|store/|core/|testing/)")
  else()
    allowed_of("${area}" allowed)
  endif()
  file(STRINGS "${ROOT}/${f}" lines REGEX "^[ \t]*#[ \t]*include")
  foreach(line ${lines})
    if(line MATCHES "#[ \t]*include[ \t]*\"([^\"]+)\"")
      set(header "${CMAKE_MATCH_1}")
      if(header MATCHES "${project_folders}" AND NOT header MATCHES "${allowed}")
        list(APPEND bad "${f}: ${line}")
      endif()
    elseif(line MATCHES "#[ \t]*include[ \t]*<([^>]+)>")
      set(header "${CMAKE_MATCH_1}")
      if(f MATCHES "^core/" AND NOT header MATCHES "^[a-z_0-9]+$"
         AND NOT header MATCHES "^(gtest|gmock)/")
        list(APPEND bad "${f}: ${line} (the core uses the standard library only)")
      elseif(header MATCHES "^Q" AND NOT f MATCHES "^(ui/|bench/ui_)")
        list(APPEND bad "${f}: ${line} (Qt belongs in ui/)")
      elseif(header MATCHES "^sqlite3" AND NOT f MATCHES "^store/")
        list(APPEND bad "${f}: ${line} (SQLite belongs in store/)")
      endif()
    endif()
  endforeach()
endforeach()
if(bad)
  list(JOIN bad "\n" text)
  message(FATAL_ERROR "Includes against the layout's direction:\n${text}")
endif()
