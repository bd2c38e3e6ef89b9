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
          "app/models/f_test.cpp" "#include \"testing/scratch_folder.h\""
          "ui/g.cpp" "#include <QWidget>")
expect_check(${SCRATCH}/good pass "")

tree(upward "core/base/a.h" "#include \"core/monitor/snapshot.h\"")
expect_check(${SCRATCH}/upward fail "core/base/a.h")
tree(sideways "core/space/a.cpp" "#include \"core/history/rollup.h\"")
expect_check(${SCRATCH}/sideways fail "core/space/a.cpp")
tree(probe_halves "probe/system/a.cpp" "#include \"probe/files/trasher.h\"")
expect_check(${SCRATCH}/probe_halves fail "probe/system/a.cpp")
tree(store_to_app "store/a.cpp" "#include \"app/entry.h\"")
expect_check(${SCRATCH}/store_to_app fail "store/a.cpp")
tree(model_to_mode "app/models/a.cpp" "#include \"app/commands/check_command.h\"")
expect_check(${SCRATCH}/model_to_mode fail "app/models/a.cpp")
tree(test_support "probe/a.cpp" "#include \"testing/scratch_folder.h\"")
expect_check(${SCRATCH}/test_support fail "probe/a.cpp")
tree(core_platform "core/base/a.cpp" "#include <sys/stat.h>")
expect_check(${SCRATCH}/core_platform fail "core/base/a.cpp")
tree(qt_outside "app/a.cpp" "#include <QObject>")
expect_check(${SCRATCH}/qt_outside fail "app/a.cpp")
tree(test_upward "core/base/a_test.cpp" "#include \"probe/proc_file.h\"")
expect_check(${SCRATCH}/test_upward fail "core/base/a_test.cpp")
