# Takes the first C++ block out of README (a file name) and writes it to OUT when it differs: what newcomers read is what
# is compiled.
file(READ ${README} text)
string(FIND "${text}" "```cpp\n" begin)
if(begin EQUAL -1)
    message(FATAL_ERROR "${README} shows no host program")
endif()
math(EXPR begin "${begin} + 7")
string(SUBSTRING "${text}" ${begin} -1 text)
string(FIND "${text}" "```" end)
string(SUBSTRING "${text}" 0 ${end} program)
file(WRITE ${OUT}.new "${program}")
file(COPY_FILE ${OUT}.new ${OUT} ONLY_IF_DIFFERENT)
