// The _ravelo extension module: the environment, reports as Python exceptions and warnings,
// and the module-level functions.
#include <cstring>

#include "binding.h"

namespace ravelo_py {

namespace {

PyObject* error_type = nullptr;
PyObject* warning_type = nullptr;

const char* severity_word(int severity) {
    static const char* const words[] = {"null-error", "false alert", "report", "notice",
                                        "warning",    "error",       "internal error"};
    return severity >= 0 && severity <= INTERNAL_ERR ? words[severity] : "unknown";
}

[[noreturn]] void raise_as_error(int number, int severity, const std::string& message) {
    py::object error = py::reinterpret_borrow<py::object>(error_type)(message);
    error.attr("number") = number;
    error.attr("severity") = severity_word(severity);
    error.attr("message") = message;
    PyErr_SetObject(error_type, error.ptr());
    throw py::error_already_set();
}

}  // namespace

Environ::Environ() {
    env_ = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
    char mesg[MESG_LEN_ns];
    if (!env_ || InitRavelo2_bn(env_, mesg) < 0)
        throw std::runtime_error("the Ravelo engine could not start");
}

Environ::~Environ() {
    char mesg[MESG_LEN_ns];
    CloseRavelo_bn(env_, mesg);
}

// Never closed at process exit: Python frees objects during and after finalisation in no
// fixed order, and the engine's per-thread report lists are gone by the time static objects
// are destroyed.  The operating system takes the memory back.
std::shared_ptr<Environ> shared_environ() {
    static auto* environ = new std::shared_ptr<Environ>(std::make_shared<Environ>());
    return *environ;
}

void raise_reports(environ_ns* env) {
    report_ns* first = GetError_ns(env, NULL_ERR, nullptr);
    if (!first) return;
    std::vector<report_ns*> reports;
    for (report_ns* r = first; r; r = GetError_ns(env, NULL_ERR, r)) reports.push_back(r);
    int number = 0, severity = NULL_ERR;
    std::string message;
    std::vector<std::string> warnings;
    for (report_ns* r : reports) {
        int s = ErrorSeverity_ns(r);
        const char* text = ErrorMessage_ns(r);
        if (s >= ERROR_ERR && !number) {
            number = ErrorNumber_ns(r);
            severity = s;
            message = text ? text : "";
        } else if (s == WARNING_ERR && text) {
            warnings.emplace_back(text);
        }
    }
    for (report_ns* r : reports) ClearError_ns(r);
    for (const std::string& w : warnings)
        if (PyErr_WarnEx(warning_type, w.c_str(), 2) < 0) throw py::error_already_set();
    if (number) raise_as_error(number, severity, message);
}

void clear_reports(environ_ns* env) {
    std::vector<report_ns*> reports;
    for (report_ns* r = GetError_ns(env, NULL_ERR, nullptr); r; r = GetError_ns(env, NULL_ERR, r)) reports.push_back(r);
    for (report_ns* r : reports) ClearError_ns(r);
}

void raise_error(const std::string& message) { raise_as_error(0, ERROR_ERR, message); }

std::string text_or_empty(const char* text) { return text ? text : ""; }

const char* c_text(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw py::value_error("text holds a NUL character");
    return text.c_str();
}

}  // namespace ravelo_py

using namespace ravelo_py;

PYBIND11_MODULE(_ravelo, m) {
    m.doc() = "Belief and decision nets over the Ravelo engine (the compiled core of the ravelo package).";
    error_type = PyErr_NewExceptionWithDoc(
        "ravelo.Error",
        "A report of severity error or worse from the engine.\n\n"
        "Attributes: number (the report's number, 0 for faults found by the binding),\n"
        "severity (its word, e.g. 'error') and message (its text).",
        PyExc_Exception, nullptr);
    warning_type = PyErr_NewExceptionWithDoc("ravelo.RaveloWarning",
                                             "A warning report from the engine.", PyExc_UserWarning,
                                             nullptr);
    m.attr("Error") = py::reinterpret_borrow<py::object>(error_type);
    m.attr("RaveloWarning") = py::reinterpret_borrow<py::object>(warning_type);

    const char* version = nullptr;
    GetRaveloVersion_bn(shared_environ()->get(), &version);
    m.attr("engine_version") = text_or_empty(version);

    bind_node(m);
    bind_net(m);
}
