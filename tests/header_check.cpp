// Compiles the umbrella header alone, with every warning an error, and
// uses the exported class through the shared library.
#include <vetra/vetra.h>

int main() {
    CVTXmlParser doc;
    const vtchar text[] = {'<', 'a', '/', '>', 0};
    return doc.SetDoc(text) == 1 ? 0 : 1;
}
