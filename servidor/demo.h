#pragma once

#include "servidor/oficina.h"

#include <random>
#include <string>
#include <vector>

// The demo network: a believable back office to run the console against.
namespace servidor {

struct OpcionesDemo {
    int agencias = 300;
    int jugadasHoy = 40000;
    int diasPrevios = 6;
    int jugadasDiaPrevio = 5000;
    unsigned semilla = 20261122;
};

// One animal of the demo animal games, in draw order.
struct AnimalDemo {
    std::string numero;
    std::string nombre;
};

// The 38 animals of the demo games (compiled in from servidor/demo/animales.txt).
std::vector<AnimalDemo> animalesDemo();

// Reads the animal list text: "number;name" lines, "#" comments and blank lines skipped.
std::vector<AnimalDemo> leerAnimales(const std::string &texto);

// Fills an empty database at the moment `ahora`: users, network, games and draws, sales of
// today and of the previous days, results and prizes of the draws whose time has passed
// (except the last past draw of the automatic game, left for the result script). Fast: one
// transaction. Does nothing and returns false when the database is not empty.
bool crearDemo(Oficina &oficina, const Momento &ahora, const OpcionesDemo &opciones = {});

// One step of the sales simulator: sells up to `tickets` tickets on today's draws that are
// still open (time not reached, no result). Returns the number of tickets sold.
int simularVentas(Oficina &oficina, std::mt19937 &azar, int tickets);

} // namespace servidor
