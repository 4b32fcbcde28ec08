package world

import (
	"fmt"
	"io"
	"log"
	"os"
)

// Around starts a world with the programs that the environment names, hands it to `use`, runs the tests
// of a program (its *testing.M) and gives their exit code.
func Around(tests interface{ Run() int }, use func(*World)) int {
	directory, err := os.MkdirTemp("", "tavrin-node-")
	if err != nil {
		log.Fatal(err)
	}
	defer os.RemoveAll(directory)
	world, err := Start(Programs{Core: os.Getenv("TAVRIN_XRAY"), GeoData: os.Getenv("TAVRIN_GEO_DATA")}, directory)
	if err != nil {
		log.Print(err)
		return 1
	}
	defer world.Stop()
	use(world)
	return tests.Run()
}

// GetPage fetches a page of the sites through the SOCKS inbound and fails unless the whole of it comes.
func GetPage(url string) error {
	answer, err := Get(url)
	if err != nil {
		return err
	}
	defer answer.Body.Close()
	body, err := io.ReadAll(answer.Body)
	if err == nil && string(body) != Page {
		err = fmt.Errorf("the page came as %q", body)
	}
	return err
}
