#define PY_SSIZE_T_CLEAN
#include <Python.h>
#include <bench/side_by_side.h>

#include <cstdio>
#include <cstdlib>

namespace orb::bench {

namespace {

PyObject* MainDictionary() { return PyModule_GetDict(PyImport_AddModule("__main__")); }

void Start() {
  if (!Py_IsInitialized()) Py_InitializeEx(0);
}

}  // namespace

Python::Python(std::string const& setup) {
  Start();
  Run("import numpy");
  Run(setup);
}

void Python::Run(std::string const& code) {
  PyObject* const result = PyRun_String(code.c_str(), Py_file_input, MainDictionary(), MainDictionary());
  if (result == nullptr) {
    PyErr_Print();
    std::exit(1);
  }
  Py_DECREF(result);
}

void Python::SetFloats(std::string const& name, float* data, std::vector<long> const& shape) {
  SetArray(name, data, sizeof(float), "float32", shape);
}

void Python::SetBytes(std::string const& name, unsigned char* data, std::vector<long> const& shape) {
  SetArray(name, data, 1, "uint8", shape);
}

void Python::SetArray(std::string const& name, void* data, std::size_t bytes, std::string const& type,
                      std::vector<long> const& shape) {
  std::string extents;
  for (long const extent : shape) {
    bytes *= static_cast<std::size_t>(extent);
    extents += std::to_string(extent) + ",";
  }
  PyObject* const view = PyMemoryView_FromMemory(static_cast<char*>(data), static_cast<Py_ssize_t>(bytes), PyBUF_WRITE);
  PyDict_SetItemString(MainDictionary(), name.c_str(), view);
  Py_DECREF(view);
  Run(name + " = numpy.frombuffer(" + name + ", dtype=numpy." + type + ").reshape((" + extents + "))");
}

}  // namespace orb::bench
