package world

import (
	"context"
	"encoding/binary"
	"fmt"
	"io"
	"net"
	"net/http"
	"net/netip"
	"strconv"
	"time"
)

// SocksAddress is the inbound of the product's configuration.
const SocksAddress = "127.0.0.1:17593"

const (
	commandConnect   = 1
	commandAssociate = 3
)

// Get fetches a page through the SOCKS inbound. Names go to the core as names.
func Get(url string) (*http.Response, error) {
	transport := &http.Transport{DisableKeepAlives: true, DialContext: func(_ context.Context, _, address string) (net.Conn, error) {
		return DialSocks(address)
	}}
	return (&http.Client{Transport: transport, Timeout: 5 * time.Minute}).Get(url)
}

// DialSocks connects through the SOCKS inbound.
func DialSocks(address string) (net.Conn, error) {
	connection, _, err := greet(commandConnect, address)
	return connection, err
}

// SocksDatagrams is a UDP association of the SOCKS inbound.
type SocksDatagrams struct {
	control net.Conn
	socket  net.Conn
}

func Associate() (*SocksDatagrams, error) {
	control, relay, err := greet(commandAssociate, "0.0.0.0:0")
	if err != nil {
		return nil, err
	}
	socket, err := net.Dial("udp", relay)
	if err != nil {
		control.Close()
		return nil, err
	}
	return &SocksDatagrams{control, socket}, nil
}

func (d *SocksDatagrams) Close() {
	d.socket.Close()
	d.control.Close()
}

// Send sends one datagram to an address through the association.
func (d *SocksDatagrams) Send(to, payload string) error {
	target, err := encodeAddress(to)
	if err != nil {
		return err
	}
	_, err = d.socket.Write(append(append([]byte{0, 0, 0}, target...), payload...))
	return err
}

// Receive waits for one datagram.
func (d *SocksDatagrams) Receive(limit time.Duration) (string, error) {
	d.socket.SetReadDeadline(time.Now().Add(limit))
	buffer := make([]byte, 2048)
	length, err := d.socket.Read(buffer)
	if err != nil {
		return "", err
	}
	const ipv4Header = 10
	if length < ipv4Header || buffer[3] != 1 {
		return "", fmt.Errorf("an odd datagram of %d bytes", length)
	}
	return string(buffer[ipv4Header:length]), nil
}

// greet makes one SOCKS5 request and gives the address of the reply.
func greet(command byte, address string) (net.Conn, string, error) {
	connection, err := net.Dial("tcp", SocksAddress)
	if err != nil {
		return nil, "", err
	}
	bound, err := request(connection, command, address)
	if err != nil {
		connection.Close()
		return nil, "", err
	}
	return connection, bound, nil
}

func request(connection net.Conn, command byte, address string) (string, error) {
	target, err := encodeAddress(address)
	if err != nil {
		return "", err
	}
	connection.Write([]byte{5, 1, 0})
	method := make([]byte, 2)
	if _, err := io.ReadFull(connection, method); err != nil {
		return "", err
	}
	connection.Write(append([]byte{5, command, 0}, target...))
	reply := make([]byte, 10) // the core's own address is IPv4
	if _, err := io.ReadFull(connection, reply); err != nil {
		return "", err
	}
	if reply[1] != 0 || reply[3] != 1 {
		return "", fmt.Errorf("SOCKS reply %v", reply)
	}
	port := binary.BigEndian.Uint16(reply[8:])
	return netip.AddrPortFrom(netip.AddrFrom4([4]byte(reply[4:8])), port).String(), nil
}

func encodeAddress(address string) ([]byte, error) {
	host, portText, err := net.SplitHostPort(address)
	if err != nil {
		return nil, err
	}
	port, err := strconv.ParseUint(portText, 10, 16)
	if err != nil {
		return nil, err
	}
	encoded := append([]byte{3, byte(len(host))}, host...)
	if ip, err := netip.ParseAddr(host); err == nil {
		kind := map[bool]byte{true: 1, false: 4}[ip.Is4()]
		encoded = append([]byte{kind}, ip.AsSlice()...)
	}
	return binary.BigEndian.AppendUint16(encoded, uint16(port)), nil
}
