package service

import (
	"log"
	"os"
	"testing"

	"tavrin.example/real/core/world"
)

var everything *world.World

func TestMain(m *testing.M) {
	directory, err := os.MkdirTemp("", "tavrin-node-")
	if err != nil {
		log.Fatal(err)
	}
	programs := world.Programs{Core: os.Getenv("TAVRIN_XRAY"), GeoData: os.Getenv("TAVRIN_GEO_DATA")}
	if everything, err = world.Start(programs, directory); err != nil {
		log.Fatal(err)
	}
	code := m.Run()
	everything.Stop()
	os.RemoveAll(directory)
	os.Exit(code)
}
