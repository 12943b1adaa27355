// Two masters share one memory: request and grant decide who talks, valid and ready move a byte.
`timescale 1ns / 1ns
module bus_system (
    input clk,
    input rst
);
  wire [1:0] req;
  wire [1:0] gnt;
  wire       valid0, valid1;
  wire       write0, write1;
  wire [7:0] addr0, addr1;
  wire [7:0] wdata0, wdata1;

  wire       valid = gnt[1] ? valid1 : gnt[0] & valid0;
  wire       write = gnt[1] ? write1 : gnt[0] & write0;
  wire [7:0] addr = gnt[1] ? addr1 : addr0;
  wire [7:0] wdata = gnt[1] ? wdata1 : wdata0;
  wire       ready;
  wire [7:0] rdata;

  arbiter referee (
      .clk(clk),
      .rst(rst),
      .req(req),
      .gnt(gnt)
  );

  bus_master #(.SEED(16'h1D0B)) master0 (
      .clk(clk),
      .rst(rst),
      .req(req[0]),
      .gnt(gnt[0]),
      .valid(valid0),
      .ready(ready && gnt[0]),
      .write(write0),
      .addr(addr0),
      .wdata(wdata0)
  );

  bus_master #(.SEED(16'h7A35)) master1 (
      .clk(clk),
      .rst(rst),
      .req(req[1]),
      .gnt(gnt[1]),
      .valid(valid1),
      .ready(ready && gnt[1]),
      .write(write1),
      .addr(addr1),
      .wdata(wdata1)
  );

  memory store (
      .clk(clk),
      .rst(rst),
      .valid(valid),
      .ready(ready),
      .write(write),
      .addr(addr),
      .wdata(wdata),
      .rdata(rdata)
  );
endmodule
