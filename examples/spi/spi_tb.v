`timescale 1ns / 1ns

module spi_tb;
    reg clk = 0;
    reg rst = 1;
    reg start = 0;
    reg [7:0] tx = 8'h20;
    reg [7:0] pause = 1;
    wire [7:0] rx;
    wire rx_valid, busy, cs_n, sclk, mosi, miso;

    spi_master master(clk, rst, start, tx, rx, rx_valid, busy, cs_n, sclk, mosi, miso);
    spi_sensor sensor(cs_n, sclk, mosi, miso);

    always #5 clk = ~clk;

    // pauses of different lengths between the bytes
    always @(posedge clk) begin
        start <= 0;
        if (!rst && !busy && !start) begin
            pause <= pause - 1;
            if (pause == 0) begin
                start <= 1;
                tx <= tx * 5 + 8'h33;
                pause <= {4'd0, tx[5:2]} + 2;
            end
        end
    end

    initial begin
        $dumpfile("spi.vcd");
        $dumpvars(0, spi_tb);
        #42 rst = 0;
        #40000 $finish;
    end
endmodule
