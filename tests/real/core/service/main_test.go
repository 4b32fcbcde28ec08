package service

import (
	"os"
	"testing"

	"tavrin.example/real/core/world"
)

var everything *world.World

func TestMain(m *testing.M) {
	os.Exit(world.Around(m, func(started *world.World) { everything = started }))
}
