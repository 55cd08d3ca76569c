# Writes the software centre's description from its template, with the screenshots when a web folder
# holding docs/*.png is given.
# cmake -DTEMPLATE=... -DOUT=... -DAPP_ID=... -DVERSION=... [-DSCREENSHOT_URL=https://...] -P metainfo.cmake
set(VELTRICK_APP_ID ${APP_ID})
set(PROJECT_VERSION ${VERSION})
set(VELTRICK_SCREENSHOTS "")
if(SCREENSHOT_URL)
  string(APPEND VELTRICK_SCREENSHOTS "  <screenshots>\n")
  set(type " type=\"default\"")
  foreach(shot "main-window;The timesheet window timing a job" "job-dialog;Adding a job"
               "preferences;Preferences" "status-strip;The status strip above other windows"
               "netlink;The open timesheet on another device through Net Link")
    list(GET shot 0 name)
    list(GET shot 1 caption)
    string(APPEND VELTRICK_SCREENSHOTS "    <screenshot${type}>\n      <caption>${caption}</caption>\n"
                                       "      <image>${SCREENSHOT_URL}/${name}.png</image>\n    </screenshot>\n")
    set(type "")
  endforeach()
  string(APPEND VELTRICK_SCREENSHOTS "  </screenshots>\n")
endif()
configure_file(${TEMPLATE} ${OUT} @ONLY)
