package world

import (
	"bytes"
	"fmt"
	"net"
	"os"
	"os/exec"
	"path/filepath"
	"time"
)

const patience = 30 * time.Second

// Core is a running Xray with a directory of its own.
type Core struct {
	Directory string
	command   *exec.Cmd
	output    bytes.Buffer
	ended     chan struct{}
}

// StartCore runs a configuration and returns when the address takes connections.
func StartCore(program, geoData, directory, configuration, address string) (*Core, error) {
	file := filepath.Join(directory, "config.json")
	if err := os.WriteFile(file, []byte(configuration), 0o600); err != nil {
		return nil, err
	}
	core := &Core{Directory: directory, command: exec.Command(program, "run", "-c", file), ended: make(chan struct{})}
	core.command.Dir = directory
	core.command.Env = append(os.Environ(), "XRAY_LOCATION_ASSET="+geoData)
	core.command.Stdout = &core.output
	core.command.Stderr = &core.output
	if err := core.command.Start(); err != nil {
		return nil, err
	}
	go func() {
		core.command.Wait()
		close(core.ended)
	}()
	return core, core.awaitListening(address)
}

// Stop ends it and returns when it is gone.
func (c *Core) Stop() {
	c.command.Process.Kill()
	<-c.ended
}

func (c *Core) awaitListening(address string) error {
	for deadline := time.Now().Add(patience); time.Now().Before(deadline); {
		select {
		case <-c.ended:
			return fmt.Errorf("the core ended: %s", c.output.String())
		case <-time.After(20 * time.Millisecond):
		}
		if connection, err := net.Dial("tcp", address); err == nil {
			return connection.Close()
		}
	}
	c.Stop()
	return fmt.Errorf("the core does not listen on %s: %s", address, c.output.String())
}
