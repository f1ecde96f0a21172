# Writes C++ classes that implement every method of COM interfaces by calling unimplemented_method. For
# interface X with base B:
#     template <class I> struct without_X : without_B<I> { ...every method of X... };
# so that a class derives from without_X<X> and overrides the few methods that it has. Input: headers as widl
# writes them. Variable "wanted": names of the interfaces, bases included, separated by blanks.
BEGIN {
    count = split(wanted, names, " ")
    for (i = 1; i <= count; ++i)
        is_wanted[names[i]] = 1
    print "// Made from the system's interface headers."
    print "#pragma once"
    print "// Called by every method that a class leaves out; what it returns is the method's result."
    print "HRESULT unimplemented_method(const char* name) noexcept;"
}
!inside && /^[A-Za-z0-9_]+ : public [A-Za-z0-9_]+/ && ($1 in is_wanted) && !($1 in done) {
    interface = $1
    base = $4 == "IUnknown" ? "I" : "without_" $4 "<I>"
    inside = 1
    done[interface] = 1
    print "template <class I> struct without_" interface " : " base " {"
    next
}
inside && /^};/ {
    print "};"
    inside = 0
    next
}
inside && /virtual/ { method = "" }
inside {
    line = $0
    sub(/^ +/, " ", line)
    method = method line
    if (line ~ /= 0;/) {
        sub(/^ virtual +/, "", method)
        sub(/ *= 0;/, "", method)
        gsub(/ = [^,)]*/, "", method) # default arguments
        name = method
        sub(/.*STDMETHODCALLTYPE +/, "", name)
        sub(/ *\(.*/, "", name)
        print "    " method " override { return unimplemented_method(\"" interface "::" name "\"); }"
        method = ""
    }
}
END {
    for (i = 1; i <= count; ++i)
        if (!(names[i] in done)) {
            print "unimplemented_interfaces.awk: no interface " names[i] > "/dev/stderr"
            exit 1
        }
}
