// 256 bytes. A slow half page (40 to 5F, hexadecimal) takes one to eight wait states a byte, the
// rest none or one.
`timescale 1ns / 1ns
module memory (
    input            clk,
    input            rst,
    input            valid,
    output reg       ready,
    input            write,
    input      [7:0] addr,
    input      [7:0] wdata,
    output reg [7:0] rdata
);
  reg  [ 7:0] cells[0:255];
  reg  [ 2:0] wait_states;
  reg         busy;
  wire [15:0] random;
  wire        slow = addr[7:5] == 3'b010;

  lfsr #(.SEED(16'hACE1)) noise (
      .clk(clk),
      .rst(rst),
      .value(random)
  );

  integer i;
  initial for (i = 0; i < 256; i = i + 1) cells[i] = 255 - i;

  always @(posedge clk)
    if (rst) begin
      ready <= 0;
      busy <= 0;
      wait_states <= 0;
      rdata <= 0;
    end else if (ready) begin
      ready <= 0;
      rdata <= 0;
      busy <= 0;
    end else if (valid) begin
      if (!busy && slow) begin
        busy <= 1;
        wait_states <= random[2:0];
      end else if (wait_states != 0) wait_states <= wait_states - 1;
      else begin
        ready <= 1;
        if (write) cells[addr] <= wdata;
        else rdata <= cells[addr];
      end
    end
endmodule
