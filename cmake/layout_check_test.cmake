# Writes small trees beside the build and runs the layout check on each: a tree that keeps the
# directions passes, and each kind of violation fails naming the file.
function(expect_check tree outcome needle)
  execute_process(COMMAND ${CMAKE_COMMAND} -DROOT=${tree} -P ${CHECK}
                  RESULT_VARIABLE status ERROR_VARIABLE text OUTPUT_QUIET)
  if(outcome STREQUAL "pass" AND NOT status EQUAL 0)
    message(FATAL_ERROR "${tree} should pass the check:\n${text}")
  elseif(outcome STREQUAL "fail")
    if(status EQUAL 0)
      message(FATAL_ERROR "${tree} should fail the check")
    endif()
    string(FIND "${text}" "${needle}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "${tree}: the failure should name ${needle}:\n${text}")
    endif()
  endif()
endfunction()

function(tree name)  # name, then pairs of file and include line
  set(root ${SCRATCH}/${name})
  file(REMOVE_RECURSE ${root})
  set(args ${ARGN})
  while(args)
    list(POP_FRONT args file line)
    file(WRITE ${root}/${file} "${line}\n")
  endwhile()
endfunction()

tree(good "core/monitor/a.h" "#include \"core/base/b.h\""
          "core/clean/c.cpp" "#include \"core/space/d.h\""
          "probe/files/e.cpp" "#include \"probe/proc_file.h\""
          "app/models/f.cpp" "#include \"app/environment.h\""
          "app/desktop/h.cpp" "#include \"app/models/notification_server.h\""
          "app/models/f_test.cpp" "#include \"testing/scratch_folder.h\""
          "ui/g.cpp" "#include <QWidget>")
expect_check(${SCRATCH}/good pass "")

# A tree of one file with one forbidden include fails, naming the file.
function(violation name file line)
  tree(${name} "${file}" "${line}")
  expect_check(${SCRATCH}/${name} fail "${file}")
endfunction()

violation(upward "core/base/a.h" "#include \"core/monitor/snapshot.h\"")
violation(sideways "core/space/a.cpp" "#include \"core/history/rollup.h\"")
violation(probe_halves "probe/system/a.cpp" "#include \"probe/files/trasher.h\"")
violation(store_to_app "store/a.cpp" "#include \"app/entry.h\"")
violation(model_to_mode "app/models/a.cpp" "#include \"app/commands/check_command.h\"")
violation(model_to_desktop "app/models/a.cpp" "#include \"app/desktop/process_signals.h\"")
violation(desktop_to_mode "app/desktop/a.cpp" "#include \"app/commands/check_command.h\"")
violation(test_support "probe/a.cpp" "#include \"testing/scratch_folder.h\"")
violation(core_platform "core/base/a.cpp" "#include <sys/stat.h>")
violation(qt_outside "app/a.cpp" "#include <QObject>")
violation(test_upward "core/base/a_test.cpp" "#include \"probe/proc_file.h\"")
