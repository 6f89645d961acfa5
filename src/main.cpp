#include "app/velicor_app.h"

int main(int argc, char** argv) { return velicor::VelicorApp().run(argc, argv); }
