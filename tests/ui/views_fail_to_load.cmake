# Starts the app with a Qt Quick Controls style whose plugin is missing, so its views cannot load, and
# expects it to stop with a failure status and the QML errors on standard error, not an empty window.
# Run by ctest: cmake -DAPP=<brivanta> -DWORK_DIR=<scratch folder> -P views_fail_to_load.cmake
file(REMOVE_RECURSE "${WORK_DIR}")
file(WRITE "${WORK_DIR}/imports/QtQuick/Controls/Basic/qmldir"
    "module QtQuick.Controls.Basic\nplugin missing\n")
set(ENV{QML_IMPORT_PATH} "${WORK_DIR}/imports")
set(ENV{QT_QPA_PLATFORM} "offscreen")
set(ENV{HOME} "${WORK_DIR}")
set(ENV{XDG_CONFIG_HOME} "${WORK_DIR}/config")
execute_process(COMMAND "${APP}" RESULT_VARIABLE status ERROR_VARIABLE errors OUTPUT_QUIET TIMEOUT 30)
if(status EQUAL 0 OR NOT errors MATCHES "qrc:/Brivanta/[A-Za-z]+\\.qml:[0-9]+:[0-9]+: "
   OR NOT errors MATCHES "Brivanta's views could not be loaded\\.")
    message(FATAL_ERROR "Exit status ${status}; standard error:\n${errors}")
endif()
