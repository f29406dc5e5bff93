// Compiles the umbrella header alone, with every warning an error, and
// uses the exported class through the shared library.
#include <vetra/vetra.h>

int main() {
    CVTXmlParser doc;
    return doc.SetDoc(u"<a/>") == 1 ? 0 : 1;
}
