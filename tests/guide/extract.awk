# Makes a C++ file of the documents on the command line: a function for each section that has examples, which takes what
# the guide says that a client has, and a table of them. "no-run" behind the language marks what is
# compiled only. A name that a section declares itself is not given to it.

function finish(  i, name) {
    if (body == "")
        return
    printf "static void example%d([[maybe_unused]] Given& given) {\n", ++count
    for (i = 1; i <= names; ++i) {
        name = given[i]
        if (body !~ ("[ &*]" name "( = |;|\\()"))
            printf "    [[maybe_unused]] auto& %s = given.%s;\n", name, name
    }
    printf "%s}\n\n", body
    table = table sprintf("    {\"%s\", %s, example%d},\n", title, runs ? "true" : "false", count)
    body = ""
}

BEGIN {
    names = split("repository path error address destination", given)
    print "#include \"tests/guide/Guide.h\"\n"
}
FNR == 1 {
    finish()
    file = FILENAME
    sub(/.*\/docs\//, "docs/", file)
}
/^## / && !inside {
    finish()
    title = substr($0, 4)
    runs = 1
}
/^```cpp/ {
    inside = 1
    if ($2 == "no-run")
        runs = 0
    body = body sprintf("#line %d \"%s\"\n", FNR + 1, file)
    next
}
/^```/ {
    inside = 0
    next
}
inside { body = body $0 "\n" }
END {
    finish()
    printf "const std::vector<Example> examples{\n%s};\n", table
}
