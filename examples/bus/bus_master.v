// Asks for the bus after a random pause, moves one to four bytes, and gives the bus back.
// Requests go to slow addresses (40 to 5F, hexadecimal) about as often as to fast ones.
`timescale 1ns / 1ns
module bus_master #(
    parameter [15:0] SEED = 16'h0001
) (
    input            clk,
    input            rst,
    output reg       req,
    input            gnt,
    output reg       valid,
    input            ready,
    output reg       write,
    output reg [7:0] addr,
    output reg [7:0] wdata
);
  wire [15:0] random;
  reg  [ 5:0] pause;
  reg  [ 1:0] left;  // bytes still to come after this one

  lfsr #(.SEED(SEED)) noise (
      .clk(clk),
      .rst(rst),
      .value(random)
  );

  always @(posedge clk)
    if (rst) begin
      req <= 0;
      valid <= 0;
      write <= 0;
      addr <= 0;
      wdata <= 0;
      pause <= SEED[5:0];
      left <= 0;
    end else if (!req) begin
      if (pause != 0) pause <= pause - 1;
      else begin
        req <= 1;
        write <= random[0];
        addr <= random[1] ? {3'b010, random[6:2]} : random[9:2];
        left <= random[11:10];
      end
    end else if (!gnt) begin
      valid <= 0;
    end else if (!valid) begin
      valid <= 1;
      wdata <= write ? random[7:0] : 8'h00;
    end else if (ready) begin
      if (left == 0) begin
        valid <= 0;
        req   <= 0;
        pause <= random[5:0];
      end else begin
        left  <= left - 1;
        addr  <= addr + 1;
        wdata <= write ? random[7:0] : 8'h00;
      end
    end
endmodule
