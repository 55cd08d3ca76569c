# Makes the manual page from the README: its opening (up to "## Quick start") and its "## Using
# Veltrick" section, in HTML by cmark, with a style that reads well in any browser.
# cmake -DREADME=... -DCMARK=... -DOUT=... -P manual.cmake
file(READ ${README} readme)
string(FIND "${readme}" "\n## Quick start" quick)
string(FIND "${readme}" "\n## Using Veltrick" guide)
if(quick LESS 0 OR guide LESS 0)
  message(FATAL_ERROR "README.md needs the headings \"## Quick start\" and \"## Using Veltrick\"")
endif()
string(SUBSTRING "${readme}" 0 ${quick} opening)
string(SUBSTRING "${readme}" ${guide} -1 rest)
# The guide ends where the next section of the same level begins.
string(SUBSTRING "${rest}" 1 -1 after)
string(FIND "${after}" "\n## " next)
if(next GREATER_EQUAL 0)
  string(SUBSTRING "${rest}" 0 ${next} rest)
  string(APPEND rest "\n")
endif()
get_filename_component(outdir ${OUT} DIRECTORY)
file(MAKE_DIRECTORY ${outdir})
file(WRITE ${OUT}.md "${opening}${rest}")
execute_process(COMMAND ${CMARK} --to html ${OUT}.md OUTPUT_VARIABLE body RESULT_VARIABLE failed)
file(REMOVE ${OUT}.md)
if(failed)
  message(FATAL_ERROR "cmark could not read the README")
endif()
file(WRITE ${OUT} "<!DOCTYPE html>
<html lang=\"en\">
<head>
<meta charset=\"utf-8\">
<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">
<title>Veltrick manual</title>
<style>
body { font-family: sans-serif; line-height: 1.5; max-width: 50em; margin: 2em auto; padding: 0 1em;
       color: #1d2a33; background: #fff; }
@media (prefers-color-scheme: dark) { body { color: #dde5eb; background: #1c2329; } a { color: #8cc4ff; } }
h1, h2, h3 { line-height: 1.2; }
img { max-width: 100%; height: auto; border: 1px solid #b8c4cc; border-radius: 4px; }
code, pre { font-family: monospace; font-size: 0.95em; }
pre { padding: 0.6em 0.8em; overflow-x: auto; background: rgba(127, 127, 127, 0.12); border-radius: 4px; }
</style>
</head>
<body>
${body}</body>
</html>
")
