package world

import (
	"errors"
	"fmt"
	"net"
	"net/netip"
	"os/exec"
)

// takeNetwork puts every address of the world on the loopback. Only in a network namespace of the
// caller's own: a machine with any other interface up is left alone.
func takeNetwork() error {
	interfaces, err := net.Interfaces()
	if err != nil {
		return err
	}
	for _, one := range interfaces {
		if one.Flags&net.FlagLoopback == 0 && one.Flags&net.FlagUp != 0 {
			return errors.New("this is no network namespace of its own: " + one.Name + " is up")
		}
	}
	if err := run("ip", "link", "set", "lo", "up"); err != nil {
		return err
	}
	for _, address := range allAddresses() {
		prefix := netip.PrefixFrom(address, address.BitLen()).String()
		// Without the search for a duplicate, during which an IPv6 address can't be used yet.
		if err := run("ip", "address", "replace", prefix, "dev", "lo", "nodad"); err != nil {
			return err
		}
	}
	return nil
}

func run(name string, arguments ...string) error {
	output, err := exec.Command(name, arguments...).CombinedOutput()
	if err != nil {
		return fmt.Errorf("%s %v: %w: %s", name, arguments, err, output)
	}
	return nil
}
