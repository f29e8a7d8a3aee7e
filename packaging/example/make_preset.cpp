// make_preset HOST NAME: adds an empty preset to a unit, and prints what the unit then holds. An example of a program
// that uses the library.

#include <zorvic/zorvic.h>

#include <cstdlib>
#include <iostream>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "make_preset HOST NAME\n";
        return EXIT_FAILURE;
    }
    Zorvic::Session unit(argv[1], 1);
    Zorvic::Preset preset;
    preset.Name = argv[2];
    std::vector<Zorvic::Preset> presets;
    if (unit.CreatePreset(preset) != Zorvic::ZORVIC_STATUS_OK || unit.GetPresets(presets) != Zorvic::ZORVIC_STATUS_OK) {
        std::cerr << argv[1] << " does not answer, or refuses\n";
        return EXIT_FAILURE;
    }
    for (const Zorvic::Preset& held : presets)
        std::cout << held.PK << ' ' << held.Name << '\n';
    return EXIT_SUCCESS;
}
