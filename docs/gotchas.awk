# Makes docs/gotchas.md of the comments in the headers that are named on the command line: each
# sentence that tells of something kept for compatibility, with a link to the file.

# The name that a line of code declares: what the remark above it is about.
function declared(code) {
    if (match(code, /(class|struct|enum)( RVGIT_EXPORT)? RV[A-Za-z]+/)) {
        code = substr(code, RSTART, RLENGTH)
        sub(/.* /, "", code)
        return code
    }
    if (match(code, /[A-Za-z_]+\(/))
        return substr(code, RSTART, RLENGTH) ")"
    if (match(code, /RVGit[A-Za-z]+(\[\])? = /)) {
        code = substr(code, RSTART, RLENGTH)
        sub(/(\[\])? = $/, "", code)
        return code
    }
    if (match(code, /[A-Za-z]+( = [^;]*)?;$/)) {
        code = substr(code, RSTART, RLENGTH)
        sub(/( = .*)?;$/, "", code)
        return code
    }
    return ""
}

function finish(code,    count, index_, sentences, sentence, file, subject) {
    if (block ~ /[Kk]ept for compatibility/) {
        # A sentence ends with a full stop ahead of a blank and a capital letter.
        gsub(/\. /, ".\n", block)
        count = split(block, sentences, "\n")
        for (index_ = 1; index_ <= count; ++index_) {
            sentence = sentences[index_]
            if (sentence !~ /[Kk]ept for compatibility/)
                continue
            # "Kept for compatibility." alone is about the sentence ahead of it.
            if (sentence ~ /^ *Kept for compatibility\.?$/)
                sentence = sentences[index_ - 1]
            sub(/^.*Kept for compatibility(: |, )/, "", sentence)
            gsub(/^ +| +$/, "", sentence)
            sub(/\.$/, "", sentence)
            file = FILENAME
            sub(/.*\//, "", file)
            sub(/\.[a-z]+$/, "", file)
            subject = declared(code)
            if (subject != "" && subject != file)
                subject = ", `" subject "`"
            else
                subject = ""
            if (pending != "") {
                printf "\n## %s\n\n", pending
                pending = ""
            }
            printf "- [`%s`](../%s)%s: %s.\n", file, FILENAME, subject, sentence
        }
    }
    block = ""
}

FNR == 1 {
    finish("")
    folder = FILENAME
    sub(/\/[^\/]*$/, "", folder)
    sub(/.*\//, "", folder)
    if (folder != shown) {
        pending = folder
        shown = folder
    }
}
/^ *\/\/\/? / {
    line = $0
    sub(/^ *\/\/\/? /, "", line)
    block = block (block == "" ? "" : " ") line
    next
}
{ finish($0) }
END { finish("") }

BEGIN {
    print "# Traps"
    print ""
    print "What callers rely on is kept, also where it surprises. Each line is a remark of the header that it"
    print "links to; `./dev pages` makes this page of them."
}
